#pragma once

#include "Move.h"

namespace tidemark {

/// A move between the folders that the two paths lead to now. Throws filesystem_error when there are none.
class HeldMove {
public:
    HeldMove(const FileURL& from, const FileURL& to, OwnChanges ownChanges = {})
        : m_source(Folders::hold(from.parent()))
        , m_destination(Folders::hold(to.parent()))
        , m_move{{m_source, from}, {m_destination, to}, ownChanges}
    {
    }
    HeldMove(const HeldMove&) = delete;
    HeldMove& operator=(const HeldMove&) = delete;

    const Move& operator*() const { return m_move; }

private:
    HeldFolder m_source;
    HeldFolder m_destination;
    Move m_move;
};

}  // namespace tidemark
