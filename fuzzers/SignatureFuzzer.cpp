#include "MinisignSignature.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

/// Whatever stands in a signature file, or in place of a public key: it is read without harm, and nobody
/// can sign for a key that is not his.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tidemark;
    const std::string_view text{reinterpret_cast<const char*>(data), size};
    MinisignPublicKey::parse(text);
    const auto signature = MinisignSignature::parse(text);
    if (!signature)
        return 0;
    if (signature->trustedComment.find('\n') != std::string::npos)
        std::abort();
    // Bytes that nobody has made a key of.
    MinisignPublicKey key{.keyID = signature->keyID,
        .ed25519 = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6, 0xab, 0xf7, 0x15, 0x88, 0x09,
            0xcf, 0x4f, 0x3c, 0x76, 0x2e, 0x71, 0x60, 0xf3, 0x8b, 0x4d, 0xa5, 0x6a, 0x78, 0x4d,
            0x90, 0x45, 0x19, 0x0c, 0xfe}};
    if (signature->isValid(text, key))
        std::abort();
    return 0;
}
