#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>

class BuildingModel;

namespace QuorlanProgram::Import {

/// The messages of the IFC library, equal ones counted. Ids of instances are taken out, so that messages which differ
/// by them alone are equal.
class MessageLog {
public:
    /// Adds each line of `message`.
    void Add(std::string const& message);

    std::map<std::string, std::size_t> const& GetCounts() const { return counts_; }

private:
    std::map<std::string, std::size_t> counts_;
};

/// Keeps the standard streams of C++ silent while it lives: the IFC library prints to them.
class SilentStreams {
public:
    SilentStreams();
    SilentStreams(SilentStreams const&) = delete;
    SilentStreams& operator=(SilentStreams const&) = delete;
    ~SilentStreams();

private:
    struct Buffers;
    std::unique_ptr<Buffers> buffers_;
};

/// Reads the instances of an IFC text, whose bytes it may use up. RETURNS null, with a message, if it holds no project.
std::shared_ptr<BuildingModel> ReadIfc(std::string& text, MessageLog& log);

/// Cuts the references along which instances of a broken file may hold each other for ever: maps, placements and
/// boolean operands. The model is of no use afterwards.
void CutCycles(BuildingModel& model);

/// Sends all messages of `source`, a StatusCallback of the IFC library, to `log`.
template <typename Source, typename Message = typename Source::Message>
void ListenTo(Source& source, MessageLog& log) {
    source.setMessageCallBack(&log, [](void* target, std::shared_ptr<Message> message) {
        auto const type = message ? message->m_message_type : Source::MESSAGE_TYPE_UNKNOWN;
        if (type != Source::MESSAGE_TYPE_WARNING && type != Source::MESSAGE_TYPE_ERROR) return;
        auto const& text = message->m_message_text;
        std::string narrow;
        for (auto const c : text) narrow += c > 0 && c < 0x80 ? static_cast<char>(c) : '?';
        if (message->m_entity) narrow.append(" (").append(message->m_entity->className()).append(")");
        static_cast<MessageLog*>(target)->Add(narrow);
    });
}

}  // namespace QuorlanProgram::Import
