#pragma once

#include "Date.h"
#include "FileManager.h"
#include "JSONDecoder.h"
#include "JSONEncoder.h"

#include <optional>
#include <string>

namespace tidemark {

/// That the last sweep failed, and why. A plain value.
struct SweepFailure {
    Date at;
    std::string reason;

    void encode(JSONEncoder& encoder) const;
    static SweepFailure decode(const JSONDecoder& decoder);

    bool operator==(const SweepFailure&) const = default;
};

/// Remembers between processes whether the last sweep failed, for whoever asks for the status later.
class SweepFailureStore {
public:
    /// `fileManager` outlives the store.
    SweepFailureStore(FileURL url, FileManager& fileManager);

    /// Nothing when the last sweep went well, or when that cannot be told.
    std::optional<SweepFailure> load() const;

    /// Nothing is reported when the note cannot be written: it only says again what was said already.
    void save(const std::optional<SweepFailure>& failure) const;

private:
    FileURL m_url;
    FileManager* m_fileManager;
};

}  // namespace tidemark
