#include "OutputFile.h"

#include "Command.h"
#include "Signals.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

#if defined(_WIN32)
#include <process.h>
#define getpid _getpid
#else
#include <unistd.h>
#endif

namespace QuorlanProgram {
namespace {

namespace fs = std::filesystem;

constexpr int kMaxLinks = 40;

using FileHandle = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

[[noreturn]] void FailWith(std::string const& path, int error) {
    throw Failure(fmt::format("{}: cannot be written: {}", path, std::strerror(error)));
}

/// Writes all bytes and closes. RETURNS the error number, 0 for none.
int WriteAll(FileHandle file, std::string_view bytes) {
    if (file == nullptr) return errno;
    if (std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) return errno;
    if (std::fflush(file.get()) != 0) return errno;
    return std::fclose(file.release()) == 0 ? 0 : errno;
}

/// The file that `path` leads to through links, whether it is there or not.
fs::path FollowLinks(fs::path path) {
    std::error_code ignored;
    for (int i = 0; i < kMaxLinks && fs::is_symlink(path, ignored); ++i) {
        path = path.parent_path() / fs::read_symlink(path, ignored);
    }
    return path;
}

/// A name beside `target` that no file has; "x" makes sure of that on opening.
std::string TemporaryBeside(fs::path const& target) {
    return (target.parent_path() / fmt::format(".{}.{}.part", target.filename().string(), getpid())).string();
}

}  // namespace

void CheckOutputFile(std::string const& path, std::vector<std::string> const& inputs) {
    std::error_code ignored;
    for (auto const& input : inputs) {
        if (fs::equivalent(path, input, ignored)) {
            throw Failure(fmt::format("{}: is the input {}; it is not overwritten", path, input));
        }
    }
    if (path.empty()) throw Failure("the output file has no name");
    if (fs::is_directory(path, ignored)) throw Failure(fmt::format("{}: cannot be written: it is a directory", path));
    auto const folder = fs::path(path).parent_path();
    if (!folder.empty() && !fs::is_directory(folder, ignored)) {
        throw Failure(fmt::format("{}: cannot be written: there is no folder {}", path, folder.string()));
    }
}

void WriteOutputFile(std::string const& path, std::string_view bytes, std::vector<std::string> const& inputs) {
    CheckOutputFile(path, inputs);
    std::error_code error;
    auto const status = fs::status(path, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        if (int const failed = WriteAll({std::fopen(path.c_str(), "wb"), &std::fclose}, bytes)) FailWith(path, failed);
        return;
    }

    auto const target = FollowLinks(path);
    auto const temporary = TemporaryBeside(target);
    RemovedOnInterrupt const removed(temporary);
    if (int const failed = WriteAll({std::fopen(temporary.c_str(), "wbx"), &std::fclose}, bytes)) {
        if (failed != EEXIST) std::remove(temporary.c_str());
        FailWith(path, failed);
    }
    if (fs::exists(status)) fs::permissions(temporary, status.permissions(), error);
    fs::rename(temporary, target, error);
    if (error) {
        std::remove(temporary.c_str());
        FailWith(path, error.value());
    }
}

}  // namespace QuorlanProgram
