#include "ZipFile.h"

namespace tidemark {

namespace {

void put(std::string& bytes, std::uint32_t value, int size)
{
    for (int index = 0; index < size; ++index)
        bytes += static_cast<char>(value >> (8 * index) & 0xffU);
}

std::uint32_t checksum(std::string_view content)
{
    constexpr std::uint32_t polynomial = 0xedb88320U;
    std::uint32_t sum = 0xffffffffU;
    for (const char byte : content) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum >> 1U) ^ ((sum & 1U) != 0 ? polynomial : 0);
    }
    return ~sum;
}

/// What local header and central directory have in common.
std::string facts(const ZipFile::Entry& entry)
{
    const auto size = static_cast<std::uint32_t>(entry.content.size());
    std::string bytes;
    put(bytes, 20, 2);  // version needed
    put(bytes, 0, 2);  // flags
    put(bytes, 0, 2);  // stored
    put(bytes, 0, 2);  // time
    put(bytes, 0x21, 2);  // 1980-01-01
    put(bytes, checksum(entry.content), 4);
    put(bytes, size, 4);
    put(bytes, size, 4);
    put(bytes, static_cast<std::uint32_t>(entry.name.size()), 2);
    put(bytes, 0, 2);  // extra fields
    return bytes;
}

}  // namespace

std::string ZipFile::bytes(const std::vector<Entry>& entries)
{
    std::string bytes;
    std::string directory;
    for (const Entry& entry : entries) {
        const auto offset = static_cast<std::uint32_t>(bytes.size());
        bytes += "PK\x03\x04" + facts(entry) + entry.name + entry.content;

        directory += "PK\x01\x02";
        put(directory, 0x0314, 2);  // made by Unix
        directory += facts(entry);
        put(directory, 0, 2);  // comment
        put(directory, 0, 2);  // disk
        put(directory, 0, 2);  // internal attributes
        put(directory, static_cast<std::uint32_t>(entry.mode) << 16U, 4);
        put(directory, offset, 4);
        directory += entry.name;
    }
    const auto offset = static_cast<std::uint32_t>(bytes.size());
    bytes += directory + "PK\x05\x06";
    put(bytes, 0, 4);  // disks
    put(bytes, static_cast<std::uint32_t>(entries.size()), 2);
    put(bytes, static_cast<std::uint32_t>(entries.size()), 2);
    put(bytes, static_cast<std::uint32_t>(directory.size()), 4);
    put(bytes, offset, 4);
    put(bytes, 0, 2);  // comment
    return bytes;
}

}  // namespace tidemark
