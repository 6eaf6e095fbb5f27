#pragma once

#include "CommandFailure.h"

namespace tidemark {

/// Another process keeps the folders of this support folder tidy.
class AlreadyRunning : public CommandFailure {
public:
    AlreadyRunning()
        : CommandFailure("Tidemark is running already")
    {
    }
};

}  // namespace tidemark
