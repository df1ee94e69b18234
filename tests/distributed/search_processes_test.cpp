#include <vector>

#include "distributed/own_search_processes.h"
#include "distributed/race.h"
#include "eval/pawn_table.h"
#include "platform/text_sink.h"
#include "search/search_job.h"
#include "search/search_state.h"
#include "search/search_test.h"
#include "search/stop_word.h"

namespace valku {
namespace {

// A job on another thread gives what it gives on this one.
TEST(SearchProcessesThreads, RunAJobOnTheirOwnThread) {
    releaseHashTable();
    setHashBuckets(65536);
    // Their threads never end, so they have to stay.
    static auto* const process = new RootSearchProcess(false);
    static auto* const helper = new StandardSearchProcess;
    const auto fresh = [] {
        clearHashTable();
        clearPawnTable();
        clearHistory();
        clearAllStops();
        setPosition(richPosition);
    };
    const SearchJob job{1, -50, 50, 24, false};
    fresh();
    process->setJob(searchPosition, job, nullptr);
    process->runRootSearch();
    const SearchResult here = process->getResult();
    EXPECT_GT(here.nodes, 1000u);
    const auto compare = [&](const SearchResult& there) {
        EXPECT_EQ(there.nodes, here.nodes);
        EXPECT_EQ(there.value, here.value);
    };

    fresh();
    Event any;
    process->doneEvent.reset();
    process->startSearch(gamePosition, job, &any);
    process->doneEvent.wait();
    any.wait();
    compare(process->getResult());
    EXPECT_EQ(process->getResult().pv.moves[0], here.pv.moves[0]);
    EXPECT_TRUE(process->finished);

    // The helper works on searchPosition as it stands and counts its own nodes only.
    fresh();
    beginJob();
    nodeCount = 1000000;
    helper->startSearch(searchPosition, job, nullptr);
    helper->doneEvent.wait();
    compare(helper->getResult());

    // A job that is told to stop ends soon, whatever its depth.
    fresh();
    process->startSearch(gamePosition, {1, -50, 50, 200, false}, nullptr);
    process->requestStop();
    process->doneEvent.wait();
    EXPECT_FALSE(stopSignalOutside());
    clearAllStops();
}

// Completes its jobs at once, or when it is told to.
class Racer final : public AbstractSearchProcess {
  public:
    explicit Racer(bool prompt) : AbstractSearchProcess(ProcessKind::localClient), isPrompt(prompt) {
        result.nodes = 7;
    }
    void run() override {}
    void startSearch(const Position&, const SearchJob& newJob, Event* anyFinished) override {
        distances.push_back(newJob.distance);
        takeJob(newJob, anyFinished);
        if (isPrompt) complete();
    }
    void complete() { completeJob("racer"); }
    void requestStop() override {}
    std::string name() const override { return "racer"; }

    const bool isPrompt;
    std::vector<i32> distances;
};

TEST(SearchProcesses, RaceWithTheSameDepthAndWithoutTheLate) {
    struct : TextSink {
        void send(std::string_view) override {}
    } sink;
    textSink = &sink;
    setPosition(richPosition);
    Racer local(true), prompt(true), late(false);
    Event any;
    const RaceCourse course{"splitSearch", "local", local, stopStandardProcess, any, nullptr};
    const auto nodes = [&] {
        return race(course, {&prompt, &late}, searchPosition, {1, -50, 50, 300, false}).totalNodes;
    };
    EXPECT_EQ(nodes(), 14u);
    EXPECT_FALSE(late.isAvailable());
    EXPECT_EQ(nodes(), 14u);
    any.reset();
    late.complete();
    EXPECT_TRUE(late.isAvailable());
    EXPECT_FALSE(late.finished || late.doneEvent.waitFor(0) || any.waitFor(0));
    EXPECT_EQ(nodes(), 14u);
    EXPECT_EQ(local.distances, std::vector<i32>(3, deepestJob));
    EXPECT_EQ(prompt.distances, local.distances);
    EXPECT_EQ(late.distances, std::vector<i32>(2, deepestJob));
    textSink = nullptr;
}

TEST(SearchProcesses, OnlyTheOwnerAgesTheTable) {
    releaseHashTable();
    setHashBuckets(16);
    RootSearchProcess owner(false);
    const auto isMarked = [] { return (hashTable[0].entries[0].flags & HashEntry::usedFlag) != 0; };
    i32 score = 20;
    const auto search = [&](RootSearchProcess& process) {
        process.prepareSearch();
        EXPECT_EQ(hashUsed, 0u);
        storeLowerBound(1, 7, 0, ++score, 8, 0x11, 0, 0);
    };
    search(owner);
    EXPECT_TRUE(isMarked());
    owner.prepareSearch();
    EXPECT_FALSE(isMarked());
    search(owner);
    owner.prepareAhead();
    EXPECT_FALSE(isMarked());
    EXPECT_EQ(hashUsed, 1u);  // shown until the next search begins
    EXPECT_EQ(hashTable[0].entries[0].lowerScore, score);
    RootSearchProcess guest(true);  // joins, and clears what it joins
    search(guest);
    guest.prepareAhead();
    guest.prepareSearch();
    EXPECT_TRUE(isMarked());
    clearSharedPointer(sharedTableId);
}

}  // namespace
}  // namespace valku
