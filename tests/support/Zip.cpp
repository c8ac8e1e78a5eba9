#include "support/Zip.h"

#include <zip.h>

namespace korvane {

std::map<std::string, ZipEntry> readZip(const std::filesystem::path& path) {
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &error);
    if (!archive) {
        return {};
    }
    std::map<std::string, ZipEntry> entries;
    for (zip_int64_t i = 0; i < zip_get_num_entries(archive, 0); ++i) {
        const auto index = static_cast<zip_uint64_t>(i);
        ZipEntry entry;
        zip_uint8_t system = 0;
        zip_uint32_t attributes = 0;
        zip_file_get_external_attributes(archive, index, 0, &system, &attributes);
        entry.mode = attributes >> 16;
        zip_stat_t stat;
        zip_stat_index(archive, index, 0, &stat);
        if (zip_file_t* file = zip_fopen_index(archive, index, 0)) {
            entry.contents.resize(stat.size);
            zip_fread(file, entry.contents.data(), stat.size);
            zip_fclose(file);
        }
        entries[zip_get_name(archive, index, 0)] = entry;
    }
    zip_close(archive);
    return entries;
}

} // namespace korvane
