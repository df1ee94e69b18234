#include "platform/socket.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <thread>

#include "platform/clock.h"

namespace valku {
namespace {

Socket listener(int backlog) {
    Socket socket;
    EXPECT_TRUE(startSockets() == 0 && socket.create() == 0 && socket.setReuseAddress() == 0);
    EXPECT_TRUE(socket.bind(0) == 0 && socket.listen(backlog) == 0);
    return socket;
}

// What has been received; empty at the end.
std::string receive(Socket& socket) {
    std::string text(32768, ' ');
    text.resize(static_cast<std::size_t>(socket.receive(text.data(), text.size())));
    return text;
}

TEST(SocketThreadsTest, AConnectionEchoesLongTextsAndSeesTheOtherSideClose) {
    Socket door = listener(10);
    Socket near;
    Socket far;
    ASSERT_TRUE(near.create() == 0 && near.connect(resolveHost("localhost"), door.localPort()) == 0);
    ASSERT_TRUE(door.accept(far) == 0 && far.setNoDelay() == 0);

    std::string question;
    for (int i = 0; question.size() < 5'000'000; ++i) question += std::to_string(i) + "\n";
    std::thread echo([&] {
        for (std::string text; !(text = receive(far)).empty();) EXPECT_EQ(far.send(text), 0);
    });
    std::thread sender([&] { EXPECT_EQ(near.send(question), 0); });
    std::string answer;
    while (answer.size() < question.size()) answer += receive(near);
    sender.join();
    EXPECT_TRUE(answer == question);

    // A receiver that waits is woken by its own side; the other side then sees the end as well.
    std::thread waiter([&] { EXPECT_EQ(receive(near), ""); });
    sleepMilliseconds(20);
    near.shutDown();
    waiter.join();
    echo.join();
    near.close();
    // Only the answer to the first text shows that the other side is gone.
    far.send("text\n");
    sleepMilliseconds(20);
    EXPECT_NE(far.send("text\n"), 0);
}

TEST(SocketTest, AnUnreadTextIsGivenUp) {
    Socket door = listener(1);
    Socket near;
    Socket far;
    ASSERT_TRUE(near.create() == 0 && near.connect("127.0.0.1", door.localPort()) == 0);
    ASSERT_EQ(door.accept(far), 0);
    EXPECT_EQ(near.send("read\n", 10), 0);
    EXPECT_EQ(near.send(std::string(64'000'000, 'x'), 100), ETIMEDOUT);
    EXPECT_TRUE(far.hasInput(1000));
    EXPECT_FALSE(near.hasInput(1));
}

TEST(SocketTest, FailuresToConnectAreToldApart) {
    Socket door = listener(0);
    const std::uint16_t port = door.localPort();
    Socket caller;
    EXPECT_TRUE(caller.create() == 0 && caller.bind(port) == EADDRINUSE);
    // These connections are never accepted, so the queue of the listener is soon full.
    Socket callers[4];
    int error = 0;
    for (Socket& one : callers) {
        if (error == 0 && one.create() == 0) error = one.connect(resolveHost("127.0.0.1"), port, 200);
    }
    EXPECT_EQ(error, ETIMEDOUT);
    door.close();
    EXPECT_EQ(caller.connect("127.0.0.1", port), ECONNREFUSED);
    EXPECT_EQ(resolveHost(std::string(300, 'a')), "");
}

}  // namespace
}  // namespace valku
