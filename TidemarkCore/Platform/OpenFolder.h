#pragma once

#include "HeldFolder.h"

#include <dirent.h>

#include <memory>

namespace tidemark {

/// A folder whose entries are read one after the other.
namespace OpenFolder {

/// How failures to list a folder start.
inline constexpr const char* cannotList = "cannot list";

struct Close {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using Handle = std::unique_ptr<DIR, Close>;

/// `folder` may be a link to one. Throws filesystem_error.
Handle open(const FileURL& folder);

/// The same folder, wherever it is by now.
Handle open(const HeldFolder& folder);

}  // namespace OpenFolder

}  // namespace tidemark
