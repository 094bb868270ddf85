#include "model/BufferReaders.h"
#include "model/IfcGuid.h"
#include "model/WideText.h"

namespace Quorlan {

std::uint32_t BufferEntityReader::GetCount() const { return entities_.records()->size(); }

EntityIdentifier const& BufferEntityReader::GetIdentifier(EntityIdentifier& out, std::uint32_t entity) const {
    auto const* const record = FindElement(entities_.records(), entity);
    if (record == nullptr) {
        out = {kInvalidIndex, kInvalidIndex, kInvalidIndex, 0, {}};
        return out;
    }
    out.kind = record->identifierKind();
    out.reference = record->identifierReference();
    out.textReference = record->textReference();
    out.reserved = record->reserved();
    out.placement = ToTransform(&record->placement());
    return out;
}

void BufferEntityReader::GetText(std::wstring& out, std::uint32_t textReference) const {
    out.clear();
    if (auto const* const text = FindElement(entities_.texts(), textReference)) FromUtf8(text->string_view(), out);
}

void BufferEntityReader::GetGuid(_GUID& out, std::uint32_t reference) const {
    out = ToGuid(FindElement(entities_.guids(), reference));
}

void BufferEntityReader::GetGuidText(std::string& out, std::uint32_t reference) const {
    _GUID guid;
    GetGuid(guid, reference);
    out = CompressGuid(guid);
}

void BufferEntityReader::GetGeometricKey(GeometricKey& out, std::uint32_t reference) const {
    auto const* const key = FindElement(entities_.geometricKeys(), reference);
    if (key == nullptr) {
        out = {};
        return;
    }
    out.position = {key->positionX(), key->positionY(), key->positionZ()};
    out.shape = {key->shape0(), key->shape1(), key->shape2(), key->shape3(),
                 key->shape4(), key->shape5(), key->shape6(), key->shape7()};
}

char const* BufferEntityReader::GetIdentifierText(std::uint32_t reference) const {
    auto const* const text = FindElement(entities_.identifierTexts(), reference);
    return text == nullptr ? "" : text->c_str();
}

void BufferEntityReader::GetIdentifierString(std::string& out, std::uint32_t reference) const {
    Assign(out, FindElement(entities_.identifierTexts(), reference));
}

void BufferEntityReader::GetPlacementRecord(PlacementRecord& out, std::uint32_t entity) const {
    auto const* const record = FindElement(entities_.records(), entity);
    out = ToRecord(record == nullptr ? nullptr : &record->placement());
}

}  // namespace Quorlan
