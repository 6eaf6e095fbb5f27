#include "WorkMessages.h"

#include "CommandFailure.h"
#include "Text.h"

#include <algorithm>
#include <array>

namespace tidemark {

namespace {

struct KindName {
    WorkRequest::Kind kind;
    std::string_view name;
};

constexpr std::array kindNames{
    KindName{WorkRequest::Kind::sweep, "sweep"},
    KindName{WorkRequest::Kind::undo, "undo"},
    KindName{WorkRequest::Kind::pause, "pause"},
    KindName{WorkRequest::Kind::resume, "resume"},
    KindName{WorkRequest::Kind::addFolders, "addFolders"},
    KindName{WorkRequest::Kind::removeFolders, "removeFolders"},
    KindName{WorkRequest::Kind::bringForward, "bringForward"},
};

std::string_view nameOf(WorkRequest::Kind kind)
{
    return std::ranges::find(kindNames, kind, &KindName::kind)->name;
}

WorkRequest::Kind decodedKind(const JSONDecoder& decoder)
{
    const auto found = std::ranges::find(kindNames, decoder.string(), &KindName::name);
    if (found == kindNames.end())
        decoder.fail("unknown command");
    return found->kind;
}

/// In the form of a document.
struct PathDocument {
    GivenPath path;

    void encode(JSONEncoder& encoder) const
    {
        encoder.object([&] {
            encoder.member("asGiven", path.asGiven);
            encoder.member("clean", path.clean);
        });
    }
};

std::vector<GivenPath> decodedPaths(const JSONDecoder& decoder)
{
    std::vector<GivenPath> paths;
    for (const JSONDecoder& path : decoder.elements())
        paths.push_back({path["asGiven"].string(), path["clean"].string()});
    return paths;
}

/// Counts come as JSON numbers.
std::size_t decodedCount(const JSONDecoder& decoder)
{
    const double number = decoder.number();
    if (!(number >= 0) || number > 1e15)
        decoder.fail("not a count");
    return static_cast<std::size_t>(number);
}

}  // namespace

void WorkRequest::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("activationToken", activationToken);
        encoder.member("kind", nameOf(kind));
        encoder.member("now", now);
        encoder.memberArray("paths", [&] {
            for (const GivenPath& path : paths)
                encoder.element(PathDocument{path});
        });
    });
}

WorkRequest WorkRequest::decode(const JSONDecoder& decoder)
{
    WorkRequest request{.kind = decodedKind(decoder["kind"])};
    if (const auto now = decoder.find("now"))
        request.now = now->date();
    request.paths = decodedPaths(decoder["paths"]);
    request.activationToken = decoder["activationToken"].string();
    return request;
}

void WorkProgress::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        if (performing) {
            encoder.member("count", static_cast<double>(performing->count));
            encoder.member("index", static_cast<double>(performing->index));
        }
        encoder.member("scanning", scanning);
    });
}

WorkProgress WorkProgress::decode(const JSONDecoder& decoder)
{
    WorkProgress progress;
    if (const auto scanning = decoder.find("scanning"))
        progress.scanning = scanning->string();
    if (const auto index = decoder.find("index"))
        progress.performing = Position{decodedCount(*index), decodedCount(decoder["count"])};
    return progress;
}

std::string WorkAnswer::ofSuccess()
{
    JSONEncoder encoder;
    encoder.object([] {});
    return encoder.takeText();
}

std::string WorkAnswer::ofFailure(std::string_view reason)
{
    JSONEncoder encoder;
    encoder.object([&] { encoder.member("failure", withValidUTF8(reason)); });
    return encoder.takeText();
}

void WorkAnswer::requireSuccess(const JSONDecoder& answer)
{
    if (const auto failure = answer.find("failure"))
        throw CommandFailure{failure->string()};
}

}  // namespace tidemark
