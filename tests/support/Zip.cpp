#include "support/Zip.h"

#include <zip.h>

namespace korvane {

std::map<std::string, std::string> readZip(const std::filesystem::path& path) {
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &error);
    if (!archive) {
        return {};
    }
    std::map<std::string, std::string> entries;
    for (zip_int64_t i = 0; i < zip_get_num_entries(archive, 0); ++i) {
        const auto index = static_cast<zip_uint64_t>(i);
        zip_stat_t stat;
        zip_stat_index(archive, index, 0, &stat);
        std::string contents(stat.size, '\0');
        if (zip_file_t* file = zip_fopen_index(archive, index, 0)) {
            zip_fread(file, contents.data(), stat.size);
            zip_fclose(file);
        }
        entries[zip_get_name(archive, index, 0)] = contents;
    }
    zip_close(archive);
    return entries;
}

} // namespace korvane
