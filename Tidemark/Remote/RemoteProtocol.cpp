#include "RemoteProtocol.h"

#include <limits>
#include <stdexcept>

namespace tidemark::RemoteProtocol {

namespace {

constexpr std::size_t lengthSize = 4;
constexpr unsigned bitsPerByte = 8;

}  // namespace

Header header(std::string_view bytes)
{
    Header header;
    for (std::size_t i = 0; i < lengthSize; ++i) {
        const auto byte = static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i]));
        header.length |= byte << (bitsPerByte * i);
    }
    header.kind = static_cast<std::uint8_t>(bytes[lengthSize]);
    return header;
}

std::array<char, headerSize> headerBytes(MessageKind kind, std::string_view text)
{
    if (text.size() > std::numeric_limits<std::uint32_t>::max())
        throw std::length_error{"the message is too long to be sent"};
    std::array<char, headerSize> bytes{};
    for (std::size_t i = 0; i < lengthSize; ++i)
        bytes[i] = static_cast<char>(static_cast<unsigned char>(text.size() >> (bitsPerByte * i)));
    bytes[lengthSize] = static_cast<char>(kind);
    return bytes;
}

}  // namespace tidemark::RemoteProtocol
