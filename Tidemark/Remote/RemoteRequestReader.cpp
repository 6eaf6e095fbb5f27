#include "RemoteRequestReader.h"

#include "RemoteProtocol.h"

#include <utility>

namespace tidemark {

namespace {

constexpr std::size_t textStart = 1 + RemoteProtocol::headerSize;

}  // namespace

RemoteRequestReader::State RemoteRequestReader::take(std::string_view bytes)
{
    if (m_state != State::incomplete) {
        m_state = State::broken;
        return m_state;
    }
    m_bytes += bytes;
    m_state = stateOf(m_bytes);
    if (m_state == State::broken)
        std::exchange(m_bytes, {});
    return m_state;
}

RemoteRequestReader::State RemoteRequestReader::stateOf(std::string_view bytes) const
{
    if (bytes.empty())
        return State::incomplete;
    if (bytes.front() != RemoteProtocol::version)
        return State::broken;
    if (bytes.size() < textStart)
        return State::incomplete;
    const auto header = RemoteProtocol::header(bytes.substr(1));
    if (!header.is(RemoteProtocol::MessageKind::request)
        || header.length > RemoteProtocol::longestRequest
        || bytes.size() > textStart + header.length)
        return State::broken;
    return bytes.size() < textStart + header.length ? State::incomplete : State::complete;
}

std::string RemoteRequestReader::takeText()
{
    std::string text = std::exchange(m_bytes, {});
    return text.erase(0, textStart);
}

}  // namespace tidemark
