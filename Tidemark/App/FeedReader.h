#pragma once

namespace tidemark {

/// What `tidemark --read-update-feed` does, which the application starts for itself (ProcessUpdateFinder): prints the
/// newer version that the maker's feed announces, or nothing, and returns the exit status. Needs no screen.
int readUpdateFeed(int& argc, char** argv);

}  // namespace tidemark
