#pragma once

#include "UpdateProgress.h"

#include <QString>

namespace tidemark {

/// How far the download of a newer version is, for people: "1.5 MB of 20.0 MB downloaded".
QString progressText(const UpdateProgress& progress);

}  // namespace tidemark
