// A stand-in for macOS's ditto, for the one form the generator uses:
//
//   ditto -c -k --sequesterRsrc --keepParent SRC DST
//
// writes a ZIP at DST whose top level is the folder SRC itself, with every file
// and folder below it and their modes. Linux has no resource forks, so
// --sequesterRsrc changes nothing. On failure DST is left as it was.

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <vector>
#include <zip.h>

namespace fs = std::filesystem;

namespace {

constexpr int usageStatus = 2;

struct Failure {
    std::string message;
};

struct Archive {
    zip_t* handle = nullptr;
    ~Archive() {
        if (handle) {
            zip_discard(handle);
        }
    }
};

std::string archiveError(zip_t* archive) {
    return zip_strerror(archive);
}

void setAttributes(zip_t* archive, zip_int64_t index, const struct stat& info) {
    const auto attributes = static_cast<zip_uint32_t>(info.st_mode) << 16;
    if (zip_file_set_external_attributes(archive, static_cast<zip_uint64_t>(index), 0, ZIP_OPSYS_UNIX,
                                         attributes) != 0 ||
        zip_file_set_mtime(archive, static_cast<zip_uint64_t>(index), info.st_mtime, 0) != 0) {
        throw Failure{archiveError(archive)};
    }
}

void addEntry(zip_t* archive, const fs::path& path, const std::string& name) {
    struct stat info;
    if (lstat(path.c_str(), &info) != 0) {
        throw Failure{path.string() + ": " + std::generic_category().message(errno)};
    }
    zip_int64_t index = -1;
    if (S_ISDIR(info.st_mode)) {
        index = zip_dir_add(archive, name.c_str(), ZIP_FL_ENC_GUESS);
    } else if (S_ISLNK(info.st_mode) || S_ISREG(info.st_mode)) {
        zip_source_t* source = nullptr;
        if (S_ISLNK(info.st_mode)) {
            // A link is stored as its target text, the way zip and ditto keep links.
            std::error_code error;
            const std::string target = fs::read_symlink(path, error).string();
            if (error) {
                throw Failure{path.string() + ": " + error.message()};
            }
            void* copy = std::malloc(target.size() + 1);
            if (!copy) {
                throw Failure{"out of memory"};
            }
            std::copy(target.begin(), target.end(), static_cast<char*>(copy));
            source = zip_source_buffer(archive, copy, target.size(), 1);
        } else {
            // Open now, not at close: a file that can't be read must fail here.
            FILE* file = std::fopen(path.c_str(), "rb");
            if (!file) {
                throw Failure{path.string() + ": " + std::generic_category().message(errno)};
            }
            source = zip_source_filep(archive, file, 0, -1);
            if (!source) {
                std::fclose(file);
            }
        }
        if (!source) {
            throw Failure{archiveError(archive)};
        }
        index = zip_file_add(archive, name.c_str(), source, ZIP_FL_ENC_GUESS | ZIP_FL_OVERWRITE);
        if (index < 0) {
            zip_source_free(source);
        } else if (S_ISREG(info.st_mode)) {
            zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_DEFLATE, 0);
        }
    } else {
        // Sockets, pipes and devices have no place in an archive.
        return;
    }
    if (index < 0) {
        throw Failure{name + ": " + archiveError(archive)};
    }
    setAttributes(archive, index, info);
}

void addTree(zip_t* archive, const fs::path& folder, const std::string& prefix, const fs::path& skip) {
    std::vector<fs::path> children;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        children.push_back(it->path());
    }
    if (error) {
        throw Failure{folder.string() + ": " + error.message()};
    }
    std::sort(children.begin(), children.end());
    for (const auto& child : children) {
        if (fs::equivalent(child, skip, error)) {
            continue;
        }
        const std::string name = prefix + child.filename().string();
        const bool isFolder = fs::is_directory(fs::symlink_status(child));
        addEntry(archive, child, isFolder ? name + "/" : name);
        if (isFolder) {
            addTree(archive, child, name + "/", skip);
        }
    }
}

void archive(const fs::path& source, const fs::path& destination) {
    const fs::path normal = source.lexically_normal();
    const fs::path top = normal.has_filename() ? normal.filename() : normal.parent_path().filename();
    struct stat info;
    if (stat(source.c_str(), &info) != 0) {
        throw Failure{source.string() + ": " + std::generic_category().message(errno)};
    }

    int error = 0;
    Archive zip;
    zip.handle = zip_open(destination.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    if (!zip.handle) {
        zip_error_t details;
        zip_error_init_with_code(&details, error);
        std::string message = destination.string() + ": " + zip_error_strerror(&details);
        zip_error_fini(&details);
        throw Failure{message};
    }
    if (S_ISDIR(info.st_mode)) {
        addEntry(zip.handle, source, top.string() + "/");
        addTree(zip.handle, source, top.string() + "/", destination);
    } else {
        addEntry(zip.handle, source, top.string());
    }
    // libzip writes to a temporary file and renames it over the target only
    // when everything went in.
    if (zip_close(zip.handle) != 0) {
        throw Failure{destination.string() + ": " + archiveError(zip.handle)};
    }
    zip.handle = nullptr;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    const std::vector<std::string> flags = {"-c", "-k", "--sequesterRsrc", "--keepParent"};
    if (args.size() != flags.size() + 2 || !std::equal(flags.begin(), flags.end(), args.begin())) {
        std::fprintf(stderr, "usage: ditto -c -k --sequesterRsrc --keepParent SRC DST\n");
        return usageStatus;
    }
    try {
        archive(args[4], args[5]);
    } catch (const Failure& failure) {
        std::fprintf(stderr, "ditto: %s\n", failure.message.c_str());
        return 1;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "ditto: %s\n", exception.what());
        return 1;
    }
    return 0;
}
