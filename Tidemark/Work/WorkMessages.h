#pragma once

#include "FileURL.h"
#include "GivenPath.h"
#include "JSONDecoder.h"
#include "JSONEncoder.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// What a command asks the process to do that holds the lock of the support folder. A plain value.
struct WorkRequest {
    enum class Kind { sweep, undo, pause, resume, addFolders, removeFolders, bringForward };

    Kind kind = Kind::sweep;
    std::optional<Date> now = {};  ///< Stands in for the present; whole seconds are told.
    std::vector<GivenPath> paths = {};
    std::string activationToken =
        {};  ///< Of `bringForward`: the right to take the focus, on Wayland.

    void encode(JSONEncoder& encoder) const;
    static WorkRequest decode(const JSONDecoder& decoder);

    bool operator==(const WorkRequest&) const = default;
};

/// How far a sweep is that somebody else asked for. A plain value.
struct WorkProgress {
    struct Position {
        std::size_t index = 0;
        std::size_t count = 0;

        bool operator==(const Position&) const = default;
    };

    std::optional<std::string> scanning = {};  ///< The path of the folder.
    std::optional<Position> performing = {};

    void encode(JSONEncoder& encoder) const;
    static WorkProgress decode(const JSONDecoder& decoder);

    bool operator==(const WorkProgress&) const = default;
};

/// The last message of an answer: the result, or why there is none.
namespace WorkAnswer {

template <typename Result>
std::string of(const Result& result)
{
    JSONEncoder encoder;
    encoder.object([&] { encoder.member("result", result); });
    return encoder.takeText();
}

/// Of a request that has no result.
std::string ofSuccess();

/// `reason` is one line, with any bytes in it.
std::string ofFailure(std::string_view reason);

/// Throws CommandFailure with the reason if `answer` is one of a failure.
void requireSuccess(const JSONDecoder& answer);

/// Throws CommandFailure with the reason of a failure, DecodingError for a text that is no answer.
template <typename Result>
Result decoded(std::string text)
{
    const JSONDocument document{std::move(text), "answer"};
    requireSuccess(document.root());
    return Result::decode(document.root()["result"]);
}

}  // namespace WorkAnswer

}  // namespace tidemark
