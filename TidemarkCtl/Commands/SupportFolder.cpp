#include "SupportFolder.h"

#include "AppSupport.h"
#include "CleanPath.h"
#include "ProgressLine.h"

#include <utility>

namespace tidemark {

FileURL supportFolder(const Invocation& invocation)
{
    if (invocation.supportFolder)
        return FileURL::directory(cleanAbsolutePath(*invocation.supportFolder));
    return AppSupport::folder();
}

SupportLock lockForChanges(const FileURL& supportFolder)
{
    AppSupport::create(supportFolder);
    if (auto lock = SupportLock::tryAcquire(supportFolder))
        return std::move(*lock);
    ProgressLine line;
    line.show("waiting for another tidemarkctl to finish");
    return SupportLock::acquire(supportFolder);
}

}  // namespace tidemark
