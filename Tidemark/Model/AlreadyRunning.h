#pragma once

#include "CommandFailure.h"
#include "FileURL.h"

namespace tidemark {

/// Another process keeps the folders of this support folder tidy.
class AlreadyRunning : public CommandFailure {
public:
    explicit AlreadyRunning(FileURL supportFolder)
        : CommandFailure("Tidemark is running already")
        , m_supportFolder(std::move(supportFolder))
    {
    }

    /// Where it can be reached, see RemoteOperations.
    const FileURL& supportFolder() const { return m_supportFolder; }

private:
    FileURL m_supportFolder;
};

}  // namespace tidemark
