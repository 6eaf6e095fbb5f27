#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tidemark {

/// What goes over the socket of a support folder. It is private to one version of Tidemark.
///
/// Both sides begin with one byte, the version of this protocol: the server as soon as it has accepted the
/// client, the client before its request. Only this byte keeps its meaning from version to version; a side
/// that reads another one than its own says nothing more and closes. Messages follow:
///
///     4 bytes   length of the text, little-endian
///     1 byte    kind, see MessageKind
///     length    the text, of which nothing is known here
///
/// The client sends one request and then reads, any number of interim messages and one final message,
/// after which the server closes. A connection that ends before that has no answer. To close its side is,
/// for a client, to leave.
namespace RemoteProtocol {

enum class MessageKind : std::uint8_t {
    request = 1,
    interim = 2,
    final = 3,
};

inline constexpr char version = 1;

/// A longer request is none.
inline constexpr std::size_t longestRequest = 1 << 20;

inline constexpr std::size_t headerSize = 5;

struct Header {
    std::uint32_t length = 0;
    std::uint8_t kind = 0;  ///< Not one of MessageKind if the other side sends nonsense.

    bool is(MessageKind other) const { return kind == static_cast<std::uint8_t>(other); }
};

/// Reads the first `headerSize` bytes, which must be there.
Header header(std::string_view bytes);

/// The header for a text. Throws length_error if the text has 4 GiB or more.
std::array<char, headerSize> headerBytes(MessageKind kind, std::string_view text);

}  // namespace RemoteProtocol

}  // namespace tidemark
