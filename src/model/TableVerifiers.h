#pragma once

#include "model/BufferGate.h"
#include "model/ModelView.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// Verification of the tables of which a buffer has most. What is like the table before is not verified again.
namespace Quorlan {

/// The nesting of the schema is six tables deep; what is deeper is no model.
constexpr flatbuffers::uoffset_t kMaxDepth = 16;

/// A table is at least its 4-byte head and is reached through a 4-byte offset, so that a buffer in which nothing is
/// shared holds at most this many. The bound keeps the verifier linear in the buffer's size.
inline flatbuffers::uoffset_t GetMaxTables(std::size_t size) {
    return static_cast<flatbuffers::uoffset_t>(size / 8 + 16);
}

inline flatbuffers::Verifier MakeVerifier(std::vector<char> const& buffer) {
    auto const* const bytes = reinterpret_cast<std::uint8_t const*>(buffer.data());
    return flatbuffers::Verifier(bytes, buffer.size(), kMaxDepth, GetMaxTables(buffer.size()));
}

inline std::uint64_t SizeOf(flatbuffers::String const* text) { return text == nullptr ? 0 : text->size(); }

inline std::uint64_t SizeOfTexts(Schema::OwnerPart const& part) {
    return SizeOf(part.user()) + SizeOf(part.organization()) + SizeOf(part.application());
}

inline std::uint64_t SizeOfTexts(Schema::OwnerHistory const& history) {
    return SizeOf(history.lastModifyingUser()) + SizeOf(history.lastModifyingApplication());
}

/// The generated tables hide that they are tables.
template <class Generated>
flatbuffers::Table const& AsTable(Generated const& generated) {
    return reinterpret_cast<flatbuffers::Table const&>(generated);
}

/// Verifies faces, of which a model has more than of all else. Nearly all of them share one vtable, which is verified
/// when it is met and not again while it stays the same. The tests are those of the generated code.
class FaceVerifier {
public:
    using Faces = flatbuffers::Vector<flatbuffers::Offset<Schema::FaceTable>>;

    explicit FaceVerifier(std::vector<char> const& buffer)
        : bytes_(reinterpret_cast<std::uint8_t const*>(buffer.data())),
          bufferSize_(buffer.size()),
          facesLeft_(GetMaxTables(buffer.size())) {}

    /// Adds the bytes of all loops to `size`. REQUIRES: the vector itself has been verified.
    bool Verify(flatbuffers::Verifier& verifier, Faces const& faces, std::uint64_t& size) {
        if (faces.size() > facesLeft_) return false;
        facesLeft_ -= faces.size();
        auto const* const offsets = faces.Data();
        auto const first = static_cast<std::size_t>(offsets - bytes_);
        for (std::size_t i = 0; i < faces.size(); ++i) {
            std::size_t const face = first + 4 * i + Read<flatbuffers::uoffset_t>(first + 4 * i);
            if (!VerifyFace(verifier, face, size)) return false;
        }
        return true;
    }

    std::size_t GetFacesLeft() const { return facesLeft_; }

    /// Counts faces that were verified elsewhere. REQUIRES: they are not more than are left.
    void Count(std::size_t faces) { facesLeft_ -= faces; }

private:
    template <class T>
    T Read(std::size_t at) const {
        return flatbuffers::ReadScalar<T>(bytes_ + at);
    }

    bool Holds(std::size_t at, std::size_t length) const { return length < bufferSize_ && at <= bufferSize_ - length; }
    bool HoldsWord(std::size_t at) const { return at % 4 == 0 && Holds(at, 4); }

    bool VerifyFace(flatbuffers::Verifier& verifier, std::size_t face, std::uint64_t& size) {
        if (!HoldsWord(face)) return false;
        std::size_t const vtable = face - static_cast<std::size_t>(Read<flatbuffers::soffset_t>(face));
        if (vtable != vtable_ && !Meet(verifier, face, vtable)) return false;
        if (loopField_ == 0) return true;  // no loop

        std::size_t const field = face + loopField_;
        if (!HoldsWord(field)) return false;
        auto const offset = Read<flatbuffers::uoffset_t>(field);
        if (offset == 0 || offset > kMaxBufferSize || !HoldsWord(field + offset)) return false;
        std::size_t const loopSize = sizeof(std::uint16_t) * Read<flatbuffers::uoffset_t>(field + offset);
        size += loopSize;
        return Holds(field + offset, sizeof(flatbuffers::uoffset_t) + loopSize);
    }

    bool Meet(flatbuffers::Verifier& verifier, std::size_t face, std::size_t vtable) {
        auto const& table = *reinterpret_cast<flatbuffers::Table const*>(bytes_ + face);
        if (!table.VerifyTableStart(verifier)) return false;
        vtable_ = vtable;
        loopField_ = table.GetOptionalFieldOffset(Schema::FaceTable::VT_OUTERLOOP);
        return verifier.EndTable();
    }

    std::uint8_t const* bytes_;
    std::size_t bufferSize_;
    std::size_t facesLeft_;
    std::optional<std::size_t> vtable_;  ///< where the last one stands that has been verified
    std::size_t loopField_ = 0;          ///< what it says of the loop
};

/// The fields of owner parts and histories; those that are texts come last.
template <class Table>
constexpr std::array<flatbuffers::voffset_t, 0> kOwnerFields{};
template <>
constexpr std::array kOwnerFields<Schema::OwnerPart>{Schema::OwnerPart::VT_USER, Schema::OwnerPart::VT_ORGANIZATION,
                                                     Schema::OwnerPart::VT_APPLICATION};
template <>
constexpr std::array kOwnerFields<Schema::OwnerHistory>{Schema::OwnerHistory::VT_PART, Schema::OwnerHistory::VT_RECORD,
                                                        Schema::OwnerHistory::VT_LASTMODIFYINGUSER,
                                                        Schema::OwnerHistory::VT_LASTMODIFYINGAPPLICATION};

constexpr std::size_t CountScalars(Schema::OwnerPart const*) { return 0; }
constexpr std::size_t CountScalars(Schema::OwnerHistory const*) { return 2; }

/// Verifies owner parts or histories. Most have the vtable and the texts of the one before: such a table has only to
/// end inside the buffer. The tests are those of the generated code.
template <class Table>
class OwnerTableVerifier {
public:
    explicit OwnerTableVerifier(std::vector<char> const& buffer)
        : bytes_(reinterpret_cast<std::uint8_t const*>(buffer.data())),
          bufferSize_(buffer.size()),
          maxTables_(GetMaxTables(buffer.size())),
          verifier_(MakeVerifier(buffer)) {}

    /// Raises `longest` to the bytes of the texts of one table. REQUIRES: the vector itself has been verified.
    bool Verify(flatbuffers::Vector<flatbuffers::Offset<Table>> const& tables, std::uint64_t& longest) {
        if (tables.size() > maxTables_) return false;
        auto const first = static_cast<std::size_t>(tables.Data() - bytes_);
        for (std::size_t i = 0; i < tables.size(); ++i) {
            std::size_t const slot = first + 4 * i;
            std::size_t const at = slot + flatbuffers::ReadScalar<flatbuffers::uoffset_t>(bytes_ + slot);
            if (IsLikeTheLast(at)) continue;
            auto const& table = *tables.Get(static_cast<std::uint32_t>(i));
            if (!table.Verify(verifier_)) return false;
            longest = std::max(longest, SizeOfTexts(table));
            Remember(AsTable(table), at);
        }
        return true;
    }

private:
    static constexpr auto const& kFields = kOwnerFields<Table>;
    static constexpr std::size_t kScalars = CountScalars(static_cast<Table const*>(nullptr));

    std::size_t TargetOf(std::size_t field) const {
        return field + flatbuffers::ReadScalar<flatbuffers::uoffset_t>(bytes_ + field);
    }

    bool IsLikeTheLast(std::size_t at) const {
        if (!vtable_ || at % 4 != 0 || at > bufferSize_ || bufferSize_ - at <= extent_) return false;
        auto const toVtable = flatbuffers::ReadScalar<flatbuffers::soffset_t>(bytes_ + at);
        if (at - static_cast<std::size_t>(toVtable) != *vtable_) return false;
        for (std::size_t i = kScalars; i < kFields.size(); ++i) {
            if (fields_[i] != 0 && TargetOf(at + fields_[i]) != targets_[i]) return false;
        }
        return true;
    }

    void Remember(flatbuffers::Table const& table, std::size_t at) {
        vtable_ = static_cast<std::size_t>(table.GetVTable() - bytes_);
        extent_ = sizeof(flatbuffers::soffset_t);
        for (std::size_t i = 0; i < kFields.size(); ++i) {
            fields_[i] = table.GetOptionalFieldOffset(kFields[i]);
            extent_ = std::max(extent_, fields_[i] + sizeof(std::uint32_t));
            if (i >= kScalars && fields_[i] != 0) targets_[i] = TargetOf(at + fields_[i]);
        }
    }

    std::uint8_t const* bytes_;
    std::size_t bufferSize_;
    std::size_t maxTables_;
    flatbuffers::Verifier verifier_;
    std::optional<std::size_t> vtable_;  ///< of the last table that was not like the one before
    std::size_t extent_ = 0;             ///< [bytes] from the table's place to the end of its fields
    std::array<std::size_t, kOwnerFields<Table>.size()> fields_{};   ///< where the vtable puts them; 0: absent
    std::array<std::size_t, kOwnerFields<Table>.size()> targets_{};  ///< where the texts stand
};

}  // namespace Quorlan
