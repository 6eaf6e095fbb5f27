#include "RemoteFixture.h"

#include <QAbstractEventDispatcher>
#include <QTimer>

#include <chrono>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace tidemark {

namespace {

int argumentCount = 1;
char programName[] = "RemoteTests";
char* arguments[] = {programName, nullptr};

}  // namespace

RemoteTest::RemoteTest()
    : m_application(argumentCount, arguments)
{
}

void RemoteTest::serve(const FileURL& supportFolder)
{
    m_server = std::make_unique<RemoteServer>(
        supportFolder, [this](std::string text, std::shared_ptr<RemoteReply> reply) {
            m_requests.push_back({std::move(text), std::move(reply)});
        });
}

void RemoteTest::pumpUntil(const std::function<bool()>& condition)
{
    QTimer tooLate;
    tooLate.setSingleShot(true);
    tooLate.start(std::chrono::seconds{60});
    while (!condition()) {
        ASSERT_TRUE(tooLate.isActive()) << "it does not happen";
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void RemoteTest::pumpAll()
{
    while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents)) { }
}

RemoteClient RemoteTest::ask(std::string_view text)
{
    std::optional<RemoteClient> client = RemoteClient::connect(m_folder.url());
    if (!client)
        throw std::runtime_error{"nobody serves"};
    client->send(text);
    const std::size_t before = m_requests.size();
    pumpUntil([&] { return m_requests.size() > before; });
    return std::move(*client);
}

RemoteTest::Request RemoteTest::nextRequest()
{
    pumpUntil([&] { return !m_requests.empty(); });
    Request request = std::move(m_requests.at(0));
    m_requests.erase(m_requests.begin());
    return request;
}

void RemoteTest::expectService()
{
    RemoteClient client = ask("is anybody there?");
    EXPECT_EQ(m_requests.back().text, "is anybody there?");
    m_requests.back().reply->finish("yes");
    m_requests.pop_back();
    EXPECT_EQ(finalMessage(client), "yes");
}

std::size_t openDescriptors()
{
    namespace fs = std::filesystem;
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator{"/proc/self/fd"}, fs::directory_iterator{}));
}

std::optional<std::string> finalMessage(RemoteClient& client)
{
    std::optional<RemoteClient::Message> message = client.receive();
    if (!message)
        return std::nullopt;
    EXPECT_TRUE(message->isFinal) << message->text;
    return std::move(message->text);
}

}  // namespace tidemark
