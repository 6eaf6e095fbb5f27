#pragma once

#include <stdexcept>
#include <string>

namespace tidemark {

/// Why a newer version was not put in place. Other failures, such as those of the network or the disk, reach
/// the caller as they are.
class UpdateError : public std::runtime_error {
public:
    enum class Case {
        download,  ///< The server did not answer with the archive.
        unpack,  ///< The archive cannot be unpacked.
        notFound,  ///< There is no application in the archive.
        badSignature,  ///< The application in the archive is not the maker's.
        readOnlyLocation,  ///< The running application sits where it cannot be replaced.
    };

    /// `reason` is for the log.
    UpdateError(Case kind, const std::string& reason)
        : std::runtime_error(reason)
        , m_kind(kind)
    {
    }

    Case kind() const { return m_kind; }

private:
    Case m_kind;
};

}  // namespace tidemark
