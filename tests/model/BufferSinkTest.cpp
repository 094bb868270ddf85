#include "model/BufferSink.h"

#include <gtest/gtest.h>

#include <new>

namespace {

using Quorlan::BufferSink;

TEST(BufferSink, TablesReadBackThroughFlatBuffers) {
    BufferSink sink(0);
    sink.Append(4);
    auto const layout = sink.AppendLayout({6, 10});
    auto const table = sink.AppendTable(layout, 2);
    sink.SetOffset(0, table);
    flatbuffers::WriteScalar(sink.At(table + 4), std::uint32_t{77});
    double const numbers[] = {0.5, 0.25};
    sink.AppendVector(table, 1, numbers, 2);
    auto const bytes = sink.Take();

    auto const* const root = flatbuffers::GetRoot<flatbuffers::Table>(bytes.data());
    EXPECT_EQ(root->GetField<std::uint32_t>(4, 5), 5u) << "a field that the layout does not list is absent";
    EXPECT_EQ(root->GetField<std::uint32_t>(6, 5), 77u);
    auto const* const vector = root->GetPointer<flatbuffers::Vector<double> const*>(10);
    ASSERT_EQ(vector->size(), 2u);
    EXPECT_EQ(vector->Get(1), 0.25);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(vector->Data()) % 8, 0u);
}

TEST(BufferSink, AlignsWhatComesBehindOtherBytes) {
    BufferSink sink(0);
    sink.Append(5);
    sink.Align(8, 4);
    EXPECT_EQ(sink.GetSize(), 12u);
    sink.Align(8, 4);
    EXPECT_EQ(sink.GetSize(), 12u);
}

TEST(BufferSink, NeverReachesTwoGibibytes) {
    BufferSink sink(0);
    sink.Append(16);
    EXPECT_THROW(sink.Append(0x7FFFFFFF - 16), std::bad_array_new_length);
    EXPECT_THROW(sink.Append(~std::size_t{0}), std::bad_array_new_length);
    EXPECT_EQ(sink.GetSize(), 16u);
}

}  // namespace
