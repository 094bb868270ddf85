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
# As an expression, which also sees the folders of the targets behind it (package managers put some between).
target_include_directories(quorlan_flatbuffers SYSTEM
                           INTERFACE $<TARGET_PROPERTY:${flatbuffers_target},INTERFACE_INCLUDE_DIRECTORIES>)
