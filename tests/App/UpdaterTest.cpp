// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/Updater.h"

#include "App/Relaunch.h"
#include "App/SystemUpdates.h"
#include "AskedUser.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/Network/ScriptedHttpServer.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/TestFile.h"

#include <QByteArray>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <openssl/evp.h>

#include <atomic>
#include <fstream>

namespace vantrell::testing {

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Signs as whoever publishes releases does.
class ReleaseKey {
public:
    ReleaseKey() : m_key(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519")) {}
    ~ReleaseKey() { EVP_PKEY_free(m_key); }
    ReleaseKey(const ReleaseKey &) = delete;
    ReleaseKey &operator=(const ReleaseKey &) = delete;

    std::string publicKey() const {
        std::string bytes(32, '\0');
        std::size_t size = bytes.size();
        EVP_PKEY_get_raw_public_key(m_key, reinterpret_cast<unsigned char *>(bytes.data()), &size);
        return bytes;
    }

    std::string sign(const std::string &text) const {
        EVP_MD_CTX *context = EVP_MD_CTX_new();
        QByteArray signature(64, '\0');
        auto size = std::size_t(signature.size());
        EVP_DigestSignInit(context, nullptr, nullptr, nullptr, m_key);
        EVP_DigestSign(context, reinterpret_cast<unsigned char *>(signature.data()), &size,
                       reinterpret_cast<const unsigned char *>(text.data()), text.size());
        EVP_MD_CTX_free(context);
        return signature.toBase64().toStdString();
    }

private:
    EVP_PKEY *m_key;
};

class UpdaterTest : public ::testing::Test {
protected:
    UpdaterTest() {
        fs::create_directories(image.parent_path());
        std::ofstream(image) << "#!/bin/sh\nexit 1\n";
        before = fileContents(image);
        // Larger than what one request brings; what follows the exit is never read.
        release =
            "#!/bin/sh\ntouch '" + (folder / "started").string() + "'\nexit 0\n" + std::string(9 << 20, 'x');
    }

    /// A list with this release under the version.
    nlohmann::json listed(const std::string &version, const std::string &kind = "image") {
        std::ofstream(folder / "release", std::ios::binary) << release;
        return {{"version", version}, {"kind", kind},           {"architecture", "x86_64"},
                {"url", "release"},   {"size", release.size()}, {"sha256", sha256Of(folder / "release")}};
    }

    void publish(const std::vector<nlohmann::json> &releases) {
        const std::string text = nlohmann::json{{"releases", releases}}.dump();
        feed = nlohmann::json{{"signed", text}, {"signature", key.sign(text)}}.dump();
    }

    /// Serves the list and the release, in ranges; the first `cuts` answers with bytes break off half-way.
    void answer(ScriptedConnection &connection, const ReceivedRequest &request) {
        if (request.target == "/feed/list.json")
            return connection.answer(200, {}, feed);
        if (request.target != "/feed/release")
            return connection.answer(404);
        ++pieces;
        const std::string range = request.header("range");
        const std::size_t from = std::stoul(range.substr(6));
        const std::size_t to = std::stoul(range.substr(range.find('-') + 1));
        const std::string body = served.value_or(release).substr(from, to - from + 1);
        if (cuts > 0) {
            --cuts;
            connection.send("HTTP/1.1 206 Partial Content\r\nContent-Length: " + std::to_string(body.size()) +
                            "\r\nContent-Range: bytes " + std::to_string(from) + "-" + std::to_string(to) +
                            "/*\r\n\r\n" + body.substr(0, body.size() / 2));
            return connection.reset();
        }
        connection.answer(
            206, "Content-Range: bytes " + std::to_string(from) + "-" + std::to_string(to) + "/*\r\n", body);
    }

    std::unique_ptr<Updater> create(const std::optional<PortableCopy> &copy) {
        auto made = std::make_unique<Updater>(Updater::Options{.feed = server.url("/feed/list.json"),
                                                               .publicKey = key.publicKey(),
                                                               .currentVersion = "1.9.0",
                                                               .architecture = "x86_64",
                                                               .copy = copy,
                                                               .isBusy = [this] { return isRecording; },
                                                               .relaunch = relaunch},
                                              http, clock, user.ask());
        made->onUpdateFound = [this](const std::string &version) { announced.push_back(version); };
        made->onSessionFinished = [this] { ++finished; };
        return made;
    }

    /// The user asks, and it goes its way to the end.
    void check(Updater &updater) {
        const int sessions = finished;
        updater.checkForUpdates();
        EXPECT_TRUE(eventually([&] {
            clock.advance(1s);
            return finished == sessions + 1;
        }));
        EXPECT_TRUE(updater.canCheckForUpdates());
    }

    TemporaryFolder folder;
    const fs::path image = folder / "copy/Vantrell.AppImage";
    ReleaseKey key;
    std::string before, release, feed;
    /// In the release's place.
    std::optional<std::string> served;
    std::atomic<int> cuts = 0, pieces = 0;
    ScriptedHttpServer server{
        answering(std::make_shared<RequestLog>(),
                  [this](ScriptedConnection &connection, const ReceivedRequest &request) {
                      answer(connection, request);
                  })};
    HttpClient http;
    ManualClock clock;
    AskedUser user;
    bool isRecording = false;
    std::vector<std::string> announced;
    int finished = 0;
};

TEST_F(UpdaterTest, tellsGentlyAndPutsTheNewestInPlaceWhenItIsWanted) {
    std::ofstream(folder / "copy/.Vantrell.AppImage.update.part") << "left by a crash";
    publish({listed("1.9.5"), listed("1.10.0"), listed("1.8"), listed("2.0", "folder")});
    const auto updater = create(PortableCopy::find(image, {}));
    updater->start();
    EXPECT_TRUE(eventually([&] { return !fs::exists(folder / "copy/.Vantrell.AppImage.update.part"); }));
    clock.advance(1min);
    ASSERT_TRUE(eventually([&] { return !announced.empty(); }));
    EXPECT_THAT(announced, ElementsAre("1.10.0"));
    EXPECT_THAT(user.questions, IsEmpty());
    EXPECT_EQ(pieces, 0);

    // A line that breaks costs one piece.
    cuts = 2;
    user.answers(0);
    check(*updater);
    ASSERT_EQ(user.questions.size(), 1u);
    EXPECT_EQ(user.questions[0].message, "Vantrell Capture 1.10.0 is available");
    EXPECT_EQ(pieces, 5);
    EXPECT_TRUE(eventually([&] { return fs::exists(folder / "started"); }));
    EXPECT_EQ(fileContents(image), release);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "copy"), {}), 1);
}

TEST_F(UpdaterTest, changesNothingForAListOrAReleaseThatIsNotWhatItShouldBe) {
    const auto updater = create(PortableCopy::find(image, {}));
    const auto told = [&](const std::string &sentence) {
        user.questions.clear();
        // Yes to whatever is asked.
        user.answers(0);
        user.answers(0);
        check(*updater);
        EXPECT_EQ(user.questions.back().informative, sentence);
        user = {};
        EXPECT_EQ(fileContents(image), before);
        EXPECT_EQ(std::distance(fs::directory_iterator(folder / "copy"), {}), 1);
    };
    const std::string untrusted = "The list of updates is not from Vantrell";
    for (const std::string &nonsense : {std::string("<html>"), std::string("{}"), std::string()}) {
        feed = nonsense;
        told(untrusted);
    }
    publish({listed("2.0")});
    std::string changed = feed;
    changed.replace(changed.find("2.0"), 3, "3.0");
    feed = changed;
    told(untrusted);
    const std::string text = nlohmann::json{{"releases", {listed("2.0")}}}.dump();
    feed = nlohmann::json{{"signed", text}, {"signature", ReleaseKey().sign(text)}}.dump();
    told(untrusted);

    // Older, the same, for others, nonsense: nothing to have.
    nlohmann::json elsewhere = listed("2.0");
    elsewhere["architecture"] = "riscv64";
    publish({listed("1.8.9"), listed("1.9"), elsewhere, listed("two"), {{"version", "9"}}});
    told("Version 1.9.0 is the newest there is.");

    publish({listed("2.0")});
    cuts = 1000;
    told("The server with the updates cannot be reached");
    cuts = 0;
    served = release;
    served->back() = 'y';
    told("The update arrived damaged");
    served = release.substr(0, release.size() - 100);
    told("The update arrived damaged");
    nlohmann::json lost = listed("2.0");
    lost["url"] = "no such release";
    publish({lost});
    told("The server with the updates cannot be reached");
    EXPECT_FALSE(fs::exists(folder / "started"));
}

TEST_F(UpdaterTest, waitsForTheRecordingAndKeepsWhatIsPutOff) {
    publish({listed("2.0")});
    const auto updater = create(PortableCopy::find(image, {}));
    isRecording = true;
    user.answers(0);
    updater->checkForUpdates();
    ASSERT_TRUE(eventually([&] { return clock.sleeperCount() == 1; }));
    clock.advance(60s);
    EXPECT_FALSE(updater->canCheckForUpdates());
    EXPECT_EQ(fileContents(image), before);
    EXPECT_EQ(user.questions.size(), 1u);
    user.answers(1);
    isRecording = false;
    clock.advance(1s);
    ASSERT_TRUE(eventually([&] { return finished == 1; }));
    EXPECT_EQ(user.questions.back().message, "Vantrell Capture 2.0 is ready");
    EXPECT_EQ(fileContents(image), before);

    const int fetched = pieces;
    user.answers(0);
    check(*updater);
    EXPECT_EQ(pieces, fetched);
    EXPECT_TRUE(eventually([&] { return fs::exists(folder / "started"); }));
    EXPECT_EQ(fileContents(image), release);
}

TEST_F(UpdaterTest, replacesAWholeFolder) {
    const auto pack = [this](const std::string &name, const std::string &script) {
        fs::create_directories(folder / name / "bin");
        std::ofstream(folder / name / PortableCopy::marker).close();
        std::ofstream(folder / name / "bin/vantrell-capture") << script;
        fs::permissions(folder / name / "bin/vantrell-capture", fs::perms::owner_all);
    };
    pack("copy/capture", "#!/bin/sh\nexit 1\n");
    std::ofstream(folder / "copy/capture/bin/old library").close();
    pack("packed", "#!/bin/sh\ntouch '" + (folder / "started").string() + "'\n");
    ASSERT_EQ(std::system(("tar -C '" + (folder / "packed").string() + "' -czf '" +
                           (folder / "archive").string() + "' .")
                              .c_str()),
              0);
    release = fileContents(folder / "archive");
    publish({listed("2.0", "folder")});
    const auto updater = create(PortableCopy::find({}, folder / "copy/capture/bin/vantrell-capture"));
    user.answers(0);
    check(*updater);
    EXPECT_TRUE(eventually([&] { return fs::exists(folder / "started"); }));
    EXPECT_FALSE(fs::exists(folder / "copy/capture/bin/old library"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "copy"), {}), 2);

    // Signed, but no program in it.
    fs::remove_all(folder / "packed/bin");
    ASSERT_EQ(std::system(("tar -C '" + (folder / "packed").string() + "' -czf '" +
                           (folder / "archive").string() + "' .")
                              .c_str()),
              0);
    release = fileContents(folder / "archive");
    publish({listed("3.0", "folder")});
    user.answers(0);
    user.answers(0);
    check(*updater);
    EXPECT_EQ(user.questions.back().informative, "The update arrived damaged");
    EXPECT_TRUE(fs::exists(folder / "copy/capture/bin/vantrell-capture"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "copy"), {}), 2);
}

TEST_F(UpdaterTest, saysWhoBringsTheUpdatesOfAPackage) {
    const ScopedEnvironment noSoftwareCentre("PATH", folder.path().string());
    const auto updater = create(std::nullopt);
    updater->start();
    user.answers(0);
    check(*updater);
    ASSERT_EQ(user.questions.size(), 1u);
    EXPECT_THAT(user.questions[0].informative,
                ::testing::EndsWith(" brings the updates of Vantrell Capture"));
    EXPECT_EQ(server.connectionCount(), 0);
    EXPECT_EQ(systemUpdatesSentence("NAME=x\nID=linuxmint\nID_LIKE=\"ubuntu debian\"\n"),
              "Your system's package manager (apt) brings the updates of Vantrell Capture");
    EXPECT_EQ(systemUpdatesSentence(""), "Your system brings the updates of Vantrell Capture");
}

} // namespace
} // namespace vantrell::testing
