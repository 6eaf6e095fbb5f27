#pragma once

#include "UpdateError.h"
#include "UpdateProgress.h"

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tidemark {

/// What the updater's process tells the application while it installs, a line each. A plain value.
///
///     progress RECEIVED [TOTAL]   bytes, as decimal numbers
///     waits                       the swap waits for the application's end; nothing follows
///     failed CASE REASON          a case of UpdateError, or "other"; nothing follows
struct InstallReport {
    struct SwapWaits {
        bool operator==(const SwapWaits&) const = default;
    };

    struct Failure {
        std::optional<UpdateError::Case> kind = {};  ///< Nothing for what is no UpdateError.
        std::string reason = {};  ///< For the log.

        static Failure of(const std::exception_ptr& error);

        /// UpdateError or runtime_error.
        std::exception_ptr error() const;

        bool operator==(const Failure&) const = default;
    };

    using Content = std::variant<UpdateProgress, SwapWaits, Failure>;

    Content content;

    /// With its end of line.
    std::string line() const;

    /// `line` has no end of line. Nothing if it is none of these.
    static std::optional<InstallReport> parse(std::string_view line);

    bool operator==(const InstallReport&) const = default;
};

}  // namespace tidemark
