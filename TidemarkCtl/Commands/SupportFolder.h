#pragma once

#include "FileURL.h"
#include "Invocation.h"
#include "Operations.h"

#include <memory>

namespace tidemark {

/// The one that was asked for, else the user's own. Nothing is made. Throws filesystem_error when there is
/// no home folder.
FileURL supportFolder(const Invocation& invocation);

/// What changes something in that folder, which is made if it is missing; tells when another command has to
/// be waited for. Throws filesystem_error.
std::unique_ptr<Operations> operations(const Invocation& invocation);

}  // namespace tidemark
