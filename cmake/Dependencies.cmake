# What the library itself needs. What the program, the tests and the benchmarks need is found in their own folders.
find_package(FlatBuffers REQUIRED NAMES FlatBuffers Flatbuffers)
find_package(glm REQUIRED)

find_program(QUORLAN_FLATC flatc REQUIRED)

# Header only, and only in our sources: a caller of the library never sees FlatBuffers.
add_library(quorlan_flatbuffers INTERFACE)
set(flatbuffers_target flatbuffers::flatbuffers_shared)
if(NOT TARGET ${flatbuffers_target})
    set(flatbuffers_target flatbuffers::flatbuffers)  # a static build
endif()
get_target_property(flatbuffers_includes ${flatbuffers_target} INTERFACE_INCLUDE_DIRECTORIES)
if(flatbuffers_includes)
    target_include_directories(quorlan_flatbuffers SYSTEM INTERFACE ${flatbuffers_includes})
endif()
