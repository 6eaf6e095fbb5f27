#pragma once

#include "JSONDecoder.h"
#include "JSONEncoder.h"

#include <string>

namespace tidemark {

/// A settings file that could not be read and was kept beside the new one. A plain value.
struct ReplacedSettings {
    std::string problem;
    std::string keptAs;  ///< The path it has now.

    void encode(JSONEncoder& encoder) const;
    static ReplacedSettings decode(const JSONDecoder& decoder);

    bool operator==(const ReplacedSettings&) const = default;
};

}  // namespace tidemark
