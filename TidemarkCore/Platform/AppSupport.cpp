#include "AppSupport.h"

#include "Folders.h"
#include "StandardFolders.h"

namespace tidemark::AppSupport {

FileURL folder()
{
    return StandardFolders::dataHome().appending("Tidemark", FileURL::Kind::directory);
}

FileURL fileURL(std::string_view name)
{
    const FileURL support = folder();
    create(support);
    return support.appending(name);
}

void create(const FileURL& folder, OwnChanges ownChanges)
{
    Folders::make(folder, 0700, ownChanges);
}

}  // namespace tidemark::AppSupport
