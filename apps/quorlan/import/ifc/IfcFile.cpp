#include "ifc/IfcFile.h"

#include <ifcpp/IFC4/include/IfcBooleanOperand.h>
#include <ifcpp/IFC4/include/IfcBooleanResult.h>
#include <ifcpp/IFC4/include/IfcLocalPlacement.h>
#include <ifcpp/IFC4/include/IfcProject.h>
#include <ifcpp/IFC4/include/IfcRepresentation.h>
#include <ifcpp/IFC4/include/IfcRepresentationMap.h>
#include <ifcpp/model/BuildingModel.h>
#include <ifcpp/model/BuildingObject.h>
#include <ifcpp/model/StatusCallback.h>
#include <ifcpp/reader/ReaderSTEP.h>

#include <exception>
#include <iostream>
#include <sstream>
#include <streambuf>

namespace QuorlanProgram::Import {

namespace {

/// Takes everything and keeps nothing.
template <typename Char>
class NullBuffer : public std::basic_streambuf<Char> {
protected:
    using Traits = std::char_traits<Char>;
    typename Traits::int_type overflow(typename Traits::int_type c) override { return Traits::not_eof(c); }
};

}  // namespace

void MessageLog::Add(std::string const& message) {
    std::istringstream lines(message);
    for (std::string line; std::getline(lines, line);) {
        std::string text;
        for (std::size_t i = 0; i < line.size(); ++i) {
            text += line[i];
            while (text.back() == '#' && i + 1 < line.size() && line[i + 1] >= '0' && line[i + 1] <= '9') ++i;
        }
        if (text.find_first_not_of(" \t\r") != std::string::npos) ++counts_[text];
    }
}

struct SilentStreams::Buffers {
    NullBuffer<char> null;
    NullBuffer<wchar_t> wideNull;
    std::streambuf* out = std::cout.rdbuf(&null);
    std::streambuf* error = std::cerr.rdbuf(&null);
    std::wstreambuf* wideOut = std::wcout.rdbuf(&wideNull);
    std::wstreambuf* wideError = std::wcerr.rdbuf(&wideNull);
};

SilentStreams::SilentStreams() : buffers_(std::make_unique<Buffers>()) {}

SilentStreams::~SilentStreams() {
    std::cout.rdbuf(buffers_->out);
    std::cerr.rdbuf(buffers_->error);
    std::wcout.rdbuf(buffers_->wideOut);
    std::wcerr.rdbuf(buffers_->wideError);
}

std::shared_ptr<BuildingModel> ReadIfc(std::string& text, MessageLog& log) {
    auto model = std::make_shared<BuildingModel>();
    ReaderSTEP reader;
    ListenTo<StatusCallback>(reader, log);
    ListenTo<StatusCallback>(*model, log);
    try {
        reader.loadModelFromString(text, model);
    } catch (std::exception const& exception) {
        log.Add(exception.what());
    } catch (...) {
        log.Add("the reader gave up without a reason");
    }
    model->unsetMessageCallBack();
    if (model->getMapIfcEntities().empty() || !model->getIfcProject()) return nullptr;
    return model;
}

void CutCycles(BuildingModel& model) {
    for (auto const& entry : model.getMapIfcEntities()) {
        if (auto* map = dynamic_cast<IfcRepresentationMap*>(entry.second.get())) map->m_MappedRepresentation.reset();
        if (auto* placement = dynamic_cast<IfcLocalPlacement*>(entry.second.get())) placement->m_PlacementRelTo.reset();
        if (auto* result = dynamic_cast<IfcBooleanResult*>(entry.second.get())) {
            result->m_FirstOperand.reset();
            result->m_SecondOperand.reset();
        }
    }
}

}  // namespace QuorlanProgram::Import
