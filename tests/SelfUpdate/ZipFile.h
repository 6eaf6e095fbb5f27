#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>

namespace tidemark {

/// A zip archive (PKWARE APPNOTE.TXT 6.3) written by hand, without compression, so that it can hold what
/// no tool would put into one.
class ZipFile {
public:
    struct Entry {
        std::string name;
        std::string content = {};
        mode_t mode = S_IFREG | 0644;
    };

    static Entry folder(const std::string& name) { return {name + '/', {}, S_IFDIR | 0755}; }
    static Entry link(const std::string& name, const std::string& target)
    {
        return {name, target, S_IFLNK | 0777};
    }

    static std::string bytes(const std::vector<Entry>& entries);
};

}  // namespace tidemark
