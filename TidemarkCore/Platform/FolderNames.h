#pragma once

#include "FileManager.h"

namespace tidemark {

/// The names in a folder, as far as they tell which others are free. Safe from any thread.
namespace FolderNames {

/// See FileManager::visitNames.
bool visit(const FileURL& folder, const NameVisitor& visitor);
bool visit(const HeldFolder& folder, const NameVisitor& visitor);

}  // namespace FolderNames

}  // namespace tidemark
