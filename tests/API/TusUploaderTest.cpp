// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/TusUploader.h"

#include "API/VantrellAPI.h"
#include "Support/TaskScope.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/TestFile.h"

#include <gtest/gtest.h>

#include <QUuid>

#include <set>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

/// The uploader against the service's own tus server, with chunks of 100,000 bytes.
class TusUploaderTest : public ::testing::Test {
public:
    static void SetUpTestSuite() {
        service = std::make_unique<LocalService>(
            LocalService::Options{.arguments = {"--transfer", "tus", "--chunk-size", "100000"}});
        key = service->createKey();
        project = service->createProject("Tests");
    }
    static void TearDownTestSuite() { service.reset(); }

    void SetUp() override {
        service->clearFaults();
        service->clearLog();
    }

    /// A file of that size, registered with the service.
    void prepare(std::int64_t bytes) {
        writeTestFile(file, bytes);
        const auto answer =
            runTask(api.sign({project,
                              "video",
                              "video/quicktime",
                              bytes,
                              1000,
                              {},
                              {},
                              false,
                              QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString()},
                             {}));
        ASSERT_TRUE(answer) << answer.error().logText();
        assetId = answer->assetId;
        target = std::get<TusUpload>(answer->main.upload);
    }

    auto upload(std::stop_token stop = {}) {
        return uploader.upload(file, target, location,
                               {.onLocation = [this](std::string l) { return keepLocation(std::move(l)); },
                                .onProgress =
                                    [this](std::int64_t sent, std::int64_t total) {
                                        progress.push_back(sent);
                                        EXPECT_EQ(total, std::int64_t(std::filesystem::file_size(file)));
                                    }},
                               stop);
    }

    Task<> keepLocation(std::string made) {
        location = std::move(made);
        ++created;
        co_return;
    }

    void expectArrived() {
        const auto confirmed = runTask(api.confirm(assetId, {}));
        ASSERT_TRUE(confirmed) << confirmed.error().logText();
        for (const nlohmann::json &capture : service->captures(key))
            if (capture.at("id") == assetId)
                EXPECT_EQ(capture.at("sha256"), sha256Of(file));
    }

    std::int64_t bytesReceived() {
        std::int64_t sum = 0;
        for (const LocalService::LogEntry &entry : service->requests("/storage/tus"))
            sum += entry.bodyBytes;
        return sum;
    }

    static std::unique_ptr<LocalService> service;
    static std::string key;
    static std::string project;

    TemporaryFolder folder;
    const std::filesystem::path file = folder / "film.mov";
    HttpClient http;
    ManualClock clock;
    VantrellAPI api{http, *ServiceURL::parse(service->url()), [] { return key; }, {}};
    TusUploader uploader{http, clock};
    TusUpload target;
    std::string assetId;
    std::optional<std::string> location;
    int created = 0;
    std::vector<std::int64_t> progress;
};

std::unique_ptr<LocalService> TusUploaderTest::service;
std::string TusUploaderTest::key;
std::string TusUploaderTest::project;

TEST_F(TusUploaderTest, sendsAFileInChunksOverOneConnection) {
    prepare(250'001);
    service->clearLog();
    ASSERT_TRUE(runTask(upload(), clock));
    EXPECT_EQ(created, 1);
    EXPECT_TRUE(location->starts_with(service->url()));
    EXPECT_EQ(progress, (std::vector<std::int64_t>{100'000, 200'000, 250'001}));
    EXPECT_EQ(service->methods("/storage/tus"), "POST PATCH PATCH PATCH HEAD");
    std::set<int> connections;
    for (const LocalService::LogEntry &entry : service->requests("/storage/tus"))
        connections.insert(entry.connection);
    EXPECT_EQ(connections.size(), 1u);
    EXPECT_TRUE(clock.requested().empty());
    expectArrived();
}

TEST_F(TusUploaderTest, needsNoPatchForAnEmptyFileOrOneThatIsThereAlready) {
    prepare(1);
    ASSERT_TRUE(runTask(upload(), clock));
    service->clearLog();
    progress.clear();
    ASSERT_TRUE(runTask(upload(), clock));
    EXPECT_EQ(service->methods("/storage/tus"), "HEAD");
    EXPECT_EQ(created, 1);

    writeTestFile(file, 0);
    location.reset();
    service->clearLog();
    service->fault("POST", "/storage/tus",
                   {{"status", 201}, {"headers", {{"Location", "/storage/tus/empty"}}}});
    ASSERT_TRUE(runTask(upload(), clock));
    EXPECT_EQ(service->methods("/storage/tus"), "POST");
    // A location that is only a path belongs to the creation address.
    EXPECT_EQ(location, service->url() + "/storage/tus/empty");
    EXPECT_TRUE(progress.empty());
}

TEST_F(TusUploaderTest, resumesFromTheServersOffset) {
    prepare(500'000);
    service->fault("PATCH", "/storage/tus", {{"status", 400}}, 1, 2);
    const auto failed = runTask(upload(), clock);
    ASSERT_FALSE(failed);
    EXPECT_EQ(description(failed.error()), "TUS patch failed");
    EXPECT_TRUE(clock.requested().empty());

    service->clearLog();
    ASSERT_TRUE(runTask(upload(), clock));
    EXPECT_EQ(created, 1);
    EXPECT_EQ(service->methods("/storage/tus"), "HEAD PATCH PATCH PATCH HEAD");
    EXPECT_EQ(bytesReceived(), 300'000);
    expectArrived();
}

TEST_F(TusUploaderTest, startsAnewWhenTheServerNoLongerKnowsTheUpload) {
    prepare(150'000);
    location = service->url() + "/storage/tus/" + assetId + ".0123456789abcdef0123456789abcdef";
    ASSERT_TRUE(runTask(upload(), clock));
    EXPECT_EQ(created, 1);
    EXPECT_EQ(service->methods("/storage/tus"), "HEAD POST PATCH PATCH HEAD");
    expectArrived();
}

struct Fault {
    const char *name;
    nlohmann::json action;
    /// The uploader has to ask by HEAD after it.
    bool asks = true;
};

class TusFaults : public TusUploaderTest, public ::testing::WithParamInterface<Fault> {};

TEST_P(TusFaults, healWithAHeadBetweenAndNothingSentTwiceBeyondAChunk) {
    prepare(400'000);
    service->clearLog();
    service->fault("PATCH", "/storage/tus", GetParam().action, 1, 1);
    const auto result = runTask(upload(), clock);
    ASSERT_TRUE(result) << logText(result.error());
    EXPECT_EQ(created, 1);
    EXPECT_LE(bytesReceived(), 500'000);
    expectArrived();

    // The one that failed is not followed by another PATCH but by a HEAD.
    const auto requests = service->requests("/storage/tus");
    int position = -1;
    for (int i = 0, patches = 0; i < int(requests.size()) && position < 0; ++i)
        if (requests[size_t(i)].method == "PATCH" && ++patches == 2)
            position = i;
    ASSERT_GE(position, 0);
    EXPECT_EQ(requests[size_t(position) + 1].method, GetParam().asks ? "HEAD" : "PATCH");
}

const Fault faults[] = {
    {"resetWithinTheBody", {{"resetAfterBytes", 40'000}}},
    {"closedWithinTheBody", {{"closeAfterBytes", 99'999}}},
    {"resetBeforeTheBody", "reset"},
    {"swallowedAnswer", "swallowAnswer"},
    {"answerCutInItsFirstLine", {{"cutAnswerAfterBytes", 5}}},
    {"answerCutInItsHeaders", {{"cutAnswerAfterBytes", 40}}},
    {"answeredWithoutOffset", "missingOffset"},
    {"answeredTooMuch", {{"wrongOffset", 70'000}}},
    {"answeredFarTooMuch", {{"wrongOffset", 10'000'000}}},
    {"answeredNoStepForward", {{"wrongOffset", -100'000}}},
    {"conflict", {{"status", 409}}},
    {"locked", {{"status", 423}}},
    {"busy", {{"status", 429}}},
    {"timeout", {{"status", 408}}},
    {"failure", {{"status", 500}}},
    {"unavailable", {{"status", 503}}},
    {"hotelPage", {{"status", 200}, {"rawBody", "<html>Log in</html>"}}},
    {"redirect", {{"status", 302}, {"headers", {{"Location", "/elsewhere"}}}}},
};
INSTANTIATE_TEST_SUITE_P(OfOnePatch, TusFaults, ::testing::ValuesIn(faults),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(TusUploaderTest, continuesFromASmallerOffsetWithoutAPause) {
    prepare(200'000);
    // The answer names less than was sent, as if the rest had been thrown away; the resent part then
    // conflicts.
    service->fault("PATCH", "/storage/tus", {{"wrongOffset", -30'000}});
    const auto result = runTask(upload(), clock);
    ASSERT_TRUE(result) << logText(result.error());
    EXPECT_EQ(progress.front(), 70'000);
    expectArrived();
}

TEST_F(TusUploaderTest, sendsAgainWhatTheServerSaidItHadAndHasNot) {
    prepare(250'001);
    service->clearLog();
    // Something on the way answers the last chunk and loses it.
    service->fault("PATCH", "/storage/tus", {{"status", 204}, {"headers", {{"Upload-Offset", "250001"}}}}, 1,
                   2);
    const auto result = runTask(upload(), clock);
    ASSERT_TRUE(result) << logText(result.error());
    EXPECT_EQ(service->methods("/storage/tus"), "POST PATCH PATCH PATCH HEAD HEAD PATCH HEAD");
    expectArrived();

    // Where the question has no answer, what the last chunk was answered stands.
    prepare(100);
    location.reset();
    service->fault("HEAD", "/storage/tus", {{"status", 404}});
    ASSERT_TRUE(runTask(upload(), clock));
    expectArrived();
}

TEST_F(TusUploaderTest, givesUpAfterEightFailedChunksThoughOthersSucceedBetween) {
    prepare(1'000'000);
    for (int i = 0; i < 9; ++i)
        service->fault("PATCH", "/storage/tus", {{"status", 503}}, 1, i == 0 ? 0 : 1);
    const auto result = runTask(upload(), clock);
    ASSERT_FALSE(result);
    EXPECT_EQ(std::get<APIError>(result.error()), APIError::http(503, "TUS patch failed"));
    EXPECT_EQ(clock.requested(),
              (std::vector<std::chrono::milliseconds>{2s, 4s, 8s, 16s, 30s, 30s, 30s, 30s}));
    EXPECT_FALSE(progress.empty());
}

TEST_F(TusUploaderTest, failsAtOnceWhenItIsRefused) {
    prepare(200'000);
    for (const int status : {400, 403, 404, 410, 413}) {
        service->fault("PATCH", "/storage/tus", {{"status", status}});
        const auto result = runTask(upload(), clock);
        ASSERT_FALSE(result) << status;
        EXPECT_EQ(std::get<APIError>(result.error()), APIError::http(status, "TUS patch failed"));
    }
    location.reset();
    service->fault("POST", "/storage/tus", {{"status", 403}});
    EXPECT_EQ(std::get<APIError>(runTask(upload(), clock).error()), APIError::http(403, "TUS create failed"));
    service->fault("POST", "/storage/tus", {{"answerHeaders", {{"Location", nullptr}}}});
    EXPECT_EQ(std::get<APIError>(runTask(upload(), clock).error()), APIError::http(201, "TUS create failed"));
    service->fault("POST", "/storage/tus", {{"answerHeaders", {{"Location", "ftp://elsewhere/1"}}}});
    EXPECT_EQ(std::get<APIError>(runTask(upload(), clock).error()), APIError(APIError::MalformedResponse{}));
    EXPECT_TRUE(clock.requested().empty());

    target.chunkSize = 0;
    EXPECT_EQ(std::get<APIError>(runTask(upload(), clock).error()), APIError(APIError::MalformedResponse{}));
}

TEST_F(TusUploaderTest, refusesToGoOnWithAFileThatVanishedOrChanged) {
    prepare(300'000);
    enum class Change { vanish, shrink, grow, replace };
    for (const Change change : {Change::vanish, Change::shrink, Change::grow, Change::replace}) {
        writeTestFile(file, 300'000);
        location.reset();
        bool done = false;
        const auto result =
            runTask(uploader.upload(file, target, std::nullopt,
                                    {.onLocation = {},
                                     .onProgress =
                                         [this, change, &done](std::int64_t, std::int64_t) {
                                             if (std::exchange(done, true))
                                                 return;
                                             if (change == Change::vanish)
                                                 std::filesystem::remove(file);
                                             else if (change == Change::replace)
                                                 writeTestFile(file, 300'000, 2);
                                             else
                                                 std::filesystem::resize_file(
                                                     file, change == Change::grow ? 300'001 : 150'000);
                                         }},
                                    {}),
                    clock);
        ASSERT_FALSE(result);
        if (change == Change::vanish)
            EXPECT_EQ(std::get<PlatformError>(result.error()).code, ENOENT);
        else
            EXPECT_EQ(description(result.error()), "The file changed while it was being uploaded");
    }
    EXPECT_TRUE(clock.requested().empty());

    // An upload that was begun for a file of another size is not continued with this one.
    prepare(200'000);
    ASSERT_TRUE(runTask(upload(), clock));
    writeTestFile(file, 100'000);
    EXPECT_TRUE(std::holds_alternative<ContentMismatch>(runTask(upload(), clock).error()));

    EXPECT_FALSE(TusUploader::fileSize(folder / "missing"));
    EXPECT_FALSE(TusUploader::fileSize(folder.path()));
    EXPECT_EQ(TusUploader::fileSize(file), 100'000);
}

TEST_F(TusUploaderTest, endsWithItsOwnerInEveryWait) {
    prepare(200'000);
    struct Owner {
        bool ended = false;
        TaskScope scope;
    };
    const auto run = [](TusUploaderTest *test, Owner *owner, std::stop_token stop) -> Task<> {
        const auto result = co_await test->upload(stop);
        owner->ended = !result && stop.stop_requested();
    };
    const auto destroyWhen = [&](const std::function<bool()> &reached) {
        Owner owner;
        owner.scope.start(run, static_cast<TusUploaderTest *>(this), &owner);
        EXPECT_TRUE(eventually(reached));
        owner.scope.cancel();
        EXPECT_TRUE(owner.ended);
        service->clearFaults();
        service->clearLog();
    };
    const auto arrived = [](const char *method) {
        return [method] { return service->methods("/storage/tus").ends_with(method); };
    };
    service->fault("POST", "/storage/tus", "stall");
    destroyWhen(arrived("POST"));
    service->fault("PATCH", "/storage/tus", "stall");
    destroyWhen(arrived("PATCH"));
    ASSERT_TRUE(location);
    service->fault("HEAD", "/storage/tus", "stall");
    destroyWhen(arrived("HEAD"));
    service->fault("PATCH", "/storage/tus", {{"status", 500}});
    destroyWhen([this] { return clock.sleeperCount() == 1; });
    EXPECT_EQ(clock.sleeperCount(), 0);
    // A cancelled HEAD must not be taken for "unknown" and lead to a second upload.
    EXPECT_EQ(created, 1);

    ASSERT_TRUE(runTask(upload(), clock));
    expectArrived();
}

} // namespace
} // namespace vantrell::testing
