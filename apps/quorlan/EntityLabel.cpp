#include "EntityLabel.h"

namespace QuorlanProgram {
namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& out, std::uint32_t c) {
    if (c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) c = kReplacement;
    auto const append = [&](std::uint32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (c < 0x80) {
        append(c);
        return;
    }
    if (c < 0x800) {
        append(0xC0 | (c >> 6));
    } else {
        if (c < 0x10000) {
            append(0xE0 | (c >> 12));
        } else {
            append(0xF0 | (c >> 18));
            append(0x80 | ((c >> 12) & 0x3F));
        }
        append(0x80 | ((c >> 6) & 0x3F));
    }
    append(0x80 | (c & 0x3F));
}

/// The code point at `i`, which moves behind it.
std::uint32_t NextCodePoint(std::string const& text, std::size_t& i) {
    auto const lead = static_cast<unsigned char>(text[i++]);
    std::uint32_t const extra = lead < 0x80 ? 0 : lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead >= 0x80 && lead < 0xC2) return kReplacement;
    std::uint32_t c = extra == 0 ? lead : lead & (0x3Fu >> extra);
    for (std::uint32_t k = 0; k < extra; ++k) {
        if (i >= text.size() || (text[i] & 0xC0) != 0x80) return kReplacement;
        c = (c << 6) | (static_cast<unsigned char>(text[i++]) & 0x3Fu);
    }
    return c;
}

}  // namespace

std::string ToUtf8(std::wstring const& text) {
    std::string out;
    out.reserve(text.size());
    for (auto const c : text) AppendUtf8(out, static_cast<std::uint32_t>(c));
    return out;
}

std::wstring FromUtf8(std::string const& text) {
    std::wstring out;
    for (std::size_t i = 0; i < text.size();) out.push_back(static_cast<wchar_t>(NextCodePoint(text, i)));
    return out;
}

EntityLabel LabelOf(Quorlan::IEntityReader const& entities, std::uint32_t entity) {
    Quorlan::EntityIdentifier record;
    entities.GetIdentifier(record, entity);
    EntityLabel label;
    if (record.kind == 0) entities.GetGuidText(label.guid, record.reference);
    std::wstring name;
    entities.GetText(name, record.textReference);
    label.name = ToUtf8(name);
    return label;
}

std::vector<EntityLabel> LabelsOf(Quorlan::IEntityReader const& entities) {
    std::vector<EntityLabel> labels(entities.GetCount());
    for (std::uint32_t i = 0; i < labels.size(); ++i) labels[i] = LabelOf(entities, i);
    return labels;
}

}  // namespace QuorlanProgram
