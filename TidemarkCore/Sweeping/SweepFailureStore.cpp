#include "SweepFailureStore.h"

#include "JSONCoders.h"

#include <array>
#include <stdexcept>

namespace tidemark {

namespace {

constexpr std::size_t largestFile = std::size_t{1} << 20U;

/// The file's content: `failure` is missing while all is well.
struct Note {
    std::optional<SweepFailure> failure;

    void encode(JSONEncoder& encoder) const
    {
        encoder.object([&] { encoder.member("failure", failure); });
    }
    static Note decode(const JSONDecoder& decoder)
    {
        Note note;
        if (const auto failure = decoder.find("failure"))
            note.failure = SweepFailure::decode(*failure);
        return note;
    }
};

}  // namespace

void SweepFailure::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("at", at);
        encoder.member("reason", reason);
    });
}

SweepFailure SweepFailure::decode(const JSONDecoder& decoder)
{
    return {.at = decoder["at"].date(), .reason = decoder["reason"].string()};
}

SweepFailureStore::SweepFailureStore(FileURL url, FileManager& fileManager)
    : m_url(std::move(url))
    , m_fileManager(&fileManager)
{
}

std::optional<SweepFailure> SweepFailureStore::load() const
{
    try {
        if (!m_fileManager->fileExists(m_url))
            return std::nullopt;
        return JSONCoders::decode<Note>(m_fileManager->readFile(m_url, largestFile), m_url.path())
            .failure;
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
}

void SweepFailureStore::save(const std::optional<SweepFailure>& failure) const
{
    if (load() == failure)
        return;
    const std::string text = JSONCoders::encode(Note{failure});
    try {
        m_fileManager->writeAtomically(m_url, std::array<std::string_view, 1>{text});
    } catch (const std::filesystem::filesystem_error&) {
        // As promised: the failure itself has been reported where it happened.
    }
}

}  // namespace tidemark
