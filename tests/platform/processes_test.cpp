#include "platform/process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <list>
#include <set>
#include <thread>

#include "platform/clock.h"
#include "platform/shared_memory.h"

namespace valku {
namespace {

using testing::ElementsAre;
using enum SharedMemoryResult;

std::vector<std::string> restOfOutput(ChildProcess& child) {
    std::vector<std::string> lines;
    for (std::string line; child.readLine(line);) lines.push_back(line);
    return lines;
}

// A running child, killed by its destructor.
struct Partner : ChildProcess {
    explicit Partner(const std::vector<std::string>& words, std::string program = VALKU_PLATFORM_PROGRAM) {
        EXPECT_TRUE(start(program, words));
    }
    int nextNumber() {
        std::string line;
        return readLine(line) ? std::stoi(line) : -1;
    }
};

TEST(ChildProcessThreadsTest, PathsArgumentsWordsAndLinesArriveWhole) {
    const std::filesystem::path program =
        std::filesystem::temp_directory_path() / ("valku test " + std::to_string(getpid()));
    std::filesystem::copy_file(VALKU_PLATFORM_PROGRAM, program);
    Partner child({"echo", "two words", "", "$HOME;\"quoted\""}, program.string());
    EXPECT_FALSE(child.hasEnded());
    const std::string text(1'000'000, 'a');
    std::thread writer([&] {
        EXPECT_TRUE(child.write(" \n\t uci  rest\r\n\n" + text + "\nlast"));
        child.closeInput();
    });
    EXPECT_THAT(restOfOutput(child), ElementsAre("[two words]", "[]", "[$HOME;\"quoted\"]", "word uci",
                                                 "line   rest\r", "line ", "line " + text, "line last"));
    writer.join();
    EXPECT_EQ(child.wait(), 7);
    EXPECT_TRUE(child.hasEnded());
    EXPECT_TRUE(std::filesystem::equivalent(ownProgramPath("no such word"), "/proc/self/exe"));
    std::filesystem::remove(program);
}

TEST(ChildProcessThreadsTest, AMissingOrDeadChildIsSeenAndHarmless) {
    ChildProcess none;
    EXPECT_FALSE(none.start("/nonexistent/program", {}));
    EXPECT_FALSE(none.write("text"));
    EXPECT_THAT(restOfOutput(none), ElementsAre());
    EXPECT_EQ(none.wait(), -1);

    Partner child({"echo"});
    // A second child that inherited our ends of the pipes would keep them open.
    Partner other({"echo"});
    std::thread waiter([&] { EXPECT_EQ(child.wait(), 128 + SIGKILL); });
    std::thread reader([&] { EXPECT_THAT(restOfOutput(child), ElementsAre()); });
    sleepMilliseconds(20);
    child.terminate();
    waiter.join();
    reader.join();
    EXPECT_FALSE(child.write("anybody there?\n"));
}

TEST(StandardOutputTest, AReaderThatGoesAwayDoesNotEndTheWriter) {
    const std::string writer = "('" VALKU_PLATFORM_PROGRAM "' echo; echo code $? >&2)";
    Partner shell({"-c", "head -c 1000000 /dev/zero | " + writer + " | head -c 3 >/dev/null"}, "/bin/sh");
    EXPECT_THAT(restOfOutput(shell), ElementsAre("code 7"));
}

TEST(ConsoleSignalTest, TheHandlerRunsThenTheSystemEndsTheProcess) {
    for (const auto& [signal, number] : {std::pair{SIGINT, 0}, std::pair{SIGTERM, 6}}) {
        Partner child({VALKU_PLATFORM_PROGRAM, "signals"}, "/usr/bin/nohup");
        const pid_t process = child.nextNumber();
        ASSERT_GT(process, 1);
        // The keys of our terminal go to our process group; the child must not be in it.
        EXPECT_NE(getpgid(process), getpgrp());
        kill(process, SIGHUP);  // ignored from the start, and so still
        kill(process, SIGQUIT);
        EXPECT_EQ(child.nextNumber(), 1);
        kill(process, signal);
        EXPECT_EQ(child.nextNumber(), number);
        EXPECT_EQ(child.wait(), 128 + signal);
    }
}

// Ids that no other test process uses at the same time, and no engine.
int testId(int number) {
    return 0x40000000 + static_cast<int>(getpid() % 1'000'000) * 64 + number;
}

bool segmentExists(int id) {
    return shmget(id, 0, 0) >= 0;
}

TEST(SharedMemoryTest, ABlockIsSharedUnderItsIdUntilItsCreatorCloses) {
    const int id = testId(0);
    SharedMemory creator;
    SharedMemory user;
    EXPECT_EQ(user.open(id), missing);
    EXPECT_EQ(creator.create(0, 4096), refused);
    EXPECT_EQ(creator.create(id, ~std::uint64_t{0}), refused);
    ASSERT_EQ(creator.create(id, 100'000), done);
    ASSERT_EQ(user.open(id), done);
    EXPECT_EQ(user.size(), 100'000u);
    static_cast<char*>(creator.address())[99'999] = 'x';
    EXPECT_EQ(SharedMemory().create(id, 4096), taken);

    // The id is free at once, and processes that have the old block open keep it.
    EXPECT_TRUE(creator.close());
    EXPECT_EQ(creator.create(id, 100'000), done);
    EXPECT_EQ(static_cast<char*>(creator.address())[99'999], 0);
    EXPECT_EQ(static_cast<char*>(user.address())[99'999], 'x');
    EXPECT_TRUE(creator.close() && user.close());
    EXPECT_FALSE(segmentExists(id));
}

TEST(SharedMemoryTest, TheBlockOfADeadEngineIsRemovedOnceNobodyUsesIt) {
    const int id = testId(1);
    EXPECT_EQ(Partner({"claim", std::to_string(id)}).nextNumber(), id);
    EXPECT_EQ(SharedMemory().open(id), missing);
    EXPECT_FALSE(segmentExists(id));

    Partner parent({"claim", std::to_string(id)});
    EXPECT_EQ(parent.nextNumber(), id);
    Partner child({"open", std::to_string(id)});
    EXPECT_EQ(child.nextNumber(), id);
    parent.terminate();
    parent.wait();
    EXPECT_EQ(SharedMemory().create(id, 4096), taken);
    EXPECT_EQ(SharedMemory().open(id), done);
    child.closeInput();
    child.wait();
    EXPECT_FALSE(segmentExists(id));
}

TEST(SharedMemoryTest, WhatIsNotTheBlockOfADeadEngineIsLeftAlone) {
    // One whose living creator has not yet come to attaching it; one of another program, which is gone but
    // means to find it again.
    const int young = testId(2);
    const int foreign = testId(3);
    shmget(young, 4096, IPC_CREAT | 0600);
    const pid_t program = fork();
    if (program == 0) _exit(shmget(foreign, 4096, IPC_CREAT | 0660) < 0);
    waitpid(program, nullptr, 0);
    for (const int id : {young, foreign}) {
        const int segment = shmget(id, 0, 0);
        EXPECT_EQ(SharedMemory().create(id, 4096), taken);
        EXPECT_EQ(shmget(id, 0, 0), segment);
        EXPECT_EQ(shmctl(segment, IPC_RMID, nullptr), 0);
    }
}

TEST(SharedMemoryTest, EnginesThatStartTogetherGetIdsOfTheirOwn) {
    const int first = testId(10);
    // The first id is that of a dead engine, so that the processes also race to remove it.
    const std::vector<std::string> claim{"claim", std::to_string(first)};
    EXPECT_EQ(Partner(claim).nextNumber(), first);
    std::list<Partner> engines;
    for (int i = 0; i < 12; ++i) engines.emplace_back(claim);
    std::set<int> ids;
    for (Partner& engine : engines) ids.insert(engine.nextNumber());
    EXPECT_TRUE(ids.size() == 12 && *ids.begin() == first && *ids.rbegin() == first + 11);
    for (Partner& engine : engines) engine.closeInput();
    for (Partner& engine : engines) EXPECT_EQ(engine.wait(), 7);
}

}  // namespace
}  // namespace valku
