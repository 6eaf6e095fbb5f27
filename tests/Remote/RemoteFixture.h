#pragma once

#include "RawSockets.h"
#include "RemoteClient.h"
#include "RemoteReply.h"
#include "RemoteServer.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// A support folder, and an event loop with a server in it that keeps every request for the test to answer.
class RemoteTest : public testing::Test {
protected:
    struct Request {
        std::string text;
        std::shared_ptr<RemoteReply> reply;
    };

    RemoteTest();

    void serve() { serve(m_folder.url()); }
    void serve(const FileURL& supportFolder);

    /// Runs the event loop until the condition holds; fails the test if that takes longer than even a busy
    /// machine needs.
    void pumpUntil(const std::function<bool()>& condition);

    /// Runs the event loop until there is nothing left to do.
    void pumpAll();

    /// Sends a request as a client does, and has the server take it in.
    RemoteClient ask(std::string_view text);

    /// Runs the event loop until there is a request, and takes it out of `m_requests`.
    Request nextRequest();

    /// Fails the test unless a new client gets its answer.
    void expectService();

    TemporaryFolder m_folder;
    std::vector<Request> m_requests;
    std::unique_ptr<RemoteServer> m_server;

private:
    QCoreApplication m_application;
};

/// How many descriptors this process has open.
std::size_t openDescriptors();

/// The final message; anything else fails the test.
std::optional<std::string> finalMessage(RemoteClient& client);

}  // namespace tidemark
