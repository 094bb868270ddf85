#include "ObjectApi.h"

#include <model_generated.h>

namespace Quorlan::Benchmarks {

std::size_t UnpackAndPack(std::vector<char> const& buffer) {
    Schema::ModelT model;
    Schema::GetModel(buffer.data())->UnPackTo(&model);
    flatbuffers::FlatBufferBuilder builder;
    Schema::FinishModelBuffer(builder, Schema::CreateModel(builder, &model));
    return builder.GetSize();
}

}  // namespace Quorlan::Benchmarks
