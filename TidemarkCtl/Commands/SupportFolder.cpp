#include "SupportFolder.h"

#include "AppSupport.h"
#include "CleanPath.h"
#include "ProgressLine.h"

#include <optional>

namespace tidemark {

FileURL supportFolder(const Invocation& invocation)
{
    if (invocation.supportFolder)
        return FileURL::directory(cleanAbsolutePath(*invocation.supportFolder));
    return AppSupport::folder();
}

std::unique_ptr<Operations> operations(const Invocation& invocation)
{
    std::optional<ProgressLine> line;
    return Operations::open(supportFolder(invocation), [&] {
        line.emplace();
        line->show("waiting for another tidemarkctl to finish");
    });
}

}  // namespace tidemark
