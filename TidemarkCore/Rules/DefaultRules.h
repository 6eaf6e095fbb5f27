#pragma once

#include "Rule.h"

#include <vector>

namespace tidemark {

/// The rules that folders get at first. Every call makes rules with fresh ids, all enabled.
namespace DefaultRules {

Rule screenshots(FileURL into);
Rule installers(int trashAfterDaysUnopened);
Rule oldDownloads(int olderThanDays, FileURL archiveInto);
Rule markdown(FileURL into);

/// Screenshots, installers unopened for 30 days, downloads older than 30 days, in this order.
std::vector<Rule> all(FileURL screenshotsFolder, FileURL archiveFolder);

}  // namespace DefaultRules

}  // namespace tidemark
