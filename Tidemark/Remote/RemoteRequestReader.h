#pragma once

#include <string>
#include <string_view>

namespace tidemark {

/// Puts a client's request together from whatever pieces arrive. See RemoteProtocol.
class RemoteRequestReader {
public:
    enum class State {
        incomplete,
        complete,
        broken,  ///< What has arrived cannot become a request.
    };

    /// Takes more bytes and returns the state that this leads to. A broken or complete request gets broken by
    /// any more.
    State take(std::string_view bytes);

    /// The text of a complete request; it is given away.
    std::string takeText();

private:
    State stateOf(std::string_view bytes) const;

    std::string m_bytes;
    State m_state = State::incomplete;
};

}  // namespace tidemark
