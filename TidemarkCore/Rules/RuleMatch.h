#pragma once

#include "AgeBasis.h"
#include "Date.h"

#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// The conditions of a rule; all must hold, an absent one is no restriction. A plain value.
struct RuleMatch {
    std::vector<std::string> fileTypes =
        {};  ///< Extensions without dot, in lower case; empty: any.
    std::optional<std::string> namePattern =
        std::nullopt;  ///< A shell pattern for the whole file name.
    std::optional<Seconds> minAge = std::nullopt;
    AgeBasis ageBasis = AgeBasis::modified;
    std::optional<bool> screenCaptureOnly = std::nullopt;  ///< Absent counts as false.

    void encode(JSONEncoder& encoder) const;
    static RuleMatch decode(const JSONDecoder& decoder);

    bool operator==(const RuleMatch&) const = default;
};

}  // namespace tidemark
