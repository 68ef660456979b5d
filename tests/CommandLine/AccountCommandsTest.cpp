// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Account/KeyringPrompter.h"
#include "TestSupport/Account/SecretServiceSession.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::Not;

namespace vantrell::testing {

namespace {

constexpr char keyService[] = "app.vantrell.capture.apikey";
constexpr char keyAccount[] = "api-key";

std::string contentsOf(const std::filesystem::path &file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

/// What a signed address or a tus grant of the service holds: until when, and the signature.
bool holdsSignature(const std::string &text) {
    static const std::regex signature(R"(signature=|\d{13}\.[A-Za-z0-9_-]{20})");
    return std::regex_search(text, signature);
}

/// The commands around the account, with a real keyring and the real service.
class AccountCommands : public ::testing::Test {
protected:
    AccountCommands() {
        keyring.startUnlocked();
        use(SessionBus::ofThisProcess());
        program.set("VANTRELL_API_URL", service.url());
    }

    void use(const SessionBus &bus) { program.set("DBUS_SESSION_BUS_ADDRESS", bus.address()); }
    /// What opens an address on this desktop: a shell script.
    void useBrowser(const std::string &script) {
        const auto opener = program.folder() / "xdg-open";
        std::ofstream(opener) << "#!/bin/sh\n" << script << '\n';
        std::filesystem::permissions(opener, std::filesystem::perms::owner_all);
        program.set("PATH", program.folder().string() + ":" + qEnvironmentVariable("PATH").toStdString());
        program.set("DISPLAY", ":nowhere");
    }
    std::optional<std::string> stored() { return keyring.lookup(keyService, keyAccount); }

    /// Starts `pair` and returns the code of the approval page.
    std::string beginPairing() {
        program.start({"pair", "--json"});
        const auto line = nlohmann::json::parse(program.nextLine(), nullptr, false);
        if (!line.is_object() || !line.contains("approvalUrl")) {
            ADD_FAILURE() << "no approval page: " << line << program.finish().errors;
            return {};
        }
        approvalUrl = line["approvalUrl"];
        return approvalUrl.substr(approvalUrl.find_last_of('/') + 1);
    }
    void answerPairing(const std::string &code, const std::string &answer) {
        service.call("POST", "/test/pairing/" + code + "/" + answer);
    }
    void pair() {
        answerPairing(beginPairing(), "approve");
        const auto ended = program.finish();
        ASSERT_EQ(ended.exitCode, 0) << ended.output << ended.errors;
        EXPECT_EQ(ended.json(), (nlohmann::json{{"connected", true}}));
        ASSERT_TRUE(stored());
    }

    /// The sentence with which a command fails. The keyring is given 5 s and a starved machine some more;
    /// what hangs on D-Bus hangs for 25 s at least.
    std::string failureOf(const std::vector<std::string> &command) {
        QElapsedTimer elapsed;
        elapsed.start();
        const auto ended = program.run(command);
        EXPECT_NE(ended.exitCode, 0);
        EXPECT_NE(ended.exitCode, -1) << ended.errors;
        EXPECT_LT(elapsed.elapsed(), 20'000);
        const auto json = ended.json();
        return json.value(json.contains("error") ? "error" : "reason", std::string());
    }

    SecretServiceSession keyring;
    LocalService service{{.arguments = {"--pairing-interval-ms", "1000"}}};
    CaptureProgram program;
    std::string approvalUrl;
};

TEST_F(AccountCommands, pairStaysConnectedOverRestartsUntilUnpair) {
    EXPECT_EQ(program.run({"status", "--json"}).json()["reason"], "Not connected to Vantrell");
    pair();
    const auto status = program.run({"status", "--json"});
    EXPECT_EQ(status.exitCode, 0) << status.errors;
    EXPECT_EQ(status.json()["connected"], true);
    EXPECT_EQ(status.json()["limits"]["plan"].is_string(), true) << status.output;
    EXPECT_EQ(status.json()["waitingUploads"], 0);
    EXPECT_EQ(status.json()["waitingEvents"], 1); // that the pairing was completed
    const auto projects = program.run({"list", "projects", "--json"});
    EXPECT_EQ(projects.exitCode, 0) << projects.output << projects.errors;
    EXPECT_THAT(program.run({"status"}).output, HasSubstr("Connected to " + service.url()));

    const auto unpaired = program.run({"unpair", "--json"});
    EXPECT_EQ(unpaired.json(), (nlohmann::json{{"connected", false}}));
    EXPECT_FALSE(stored());
    EXPECT_EQ(program.run({"status"}).exitCode, 3);
    EXPECT_EQ(program.run({"list", "projects"}).exitCode, 3);
}

TEST_F(AccountCommands, isConnectedByTheOwnersClickInTheBrowserThatPairOpens) {
    const auto owner = [this](const std::string &answer) {
        return "exec node " VANTRELL_SOURCE_DIR "/service/test/support/answerPairing.js '" +
               service.signInUrl() + "' \"$1\" " + answer;
    };
    useBrowser(owner("Deny"));
    EXPECT_EQ(program.run({"pair", "--json"}).json()["error"],
              "The connection was denied on the approval page");
    service.restart(); // each browser needs an address of its own
    useBrowser(owner("Approve"));
    const auto ended = program.run({"pair", "--json"});
    EXPECT_EQ(ended.json(), (nlohmann::json{{"connected", true}})) << ended.errors;
    EXPECT_TRUE(stored());
    EXPECT_EQ(program.run({"status", "--json"}).json()["connected"], true);
}

TEST_F(AccountCommands, theKeyShowsNowhere) {
    // A browser that writes down what it is given.
    const auto seen = program.folder() / "browser.log";
    useBrowser("{ echo \"$@\"; env; } > '" + seen.string() + ".part'\nmv '" + seen.string() + ".part' '" +
               seen.string() + "'");
    program.set("VANTRELL_API_KEY", "vk_from_the_environment");

    const std::string code = beginPairing();
    EXPECT_TRUE(eventually([&seen] { return std::filesystem::exists(seen); }));
    const std::string process = "/proc/" + std::to_string(program.processId());
    const std::string shown =
        contentsOf(process + "/environ") + contentsOf(process + "/cmdline") + contentsOf(seen);
    EXPECT_THAT(shown, Not(HasSubstr("vk_from_the_environment")));
    EXPECT_THAT(contentsOf(seen), ::testing::StartsWith(approvalUrl + "\n"));
    answerPairing(code, "approve");
    const auto ended = program.finish();
    ASSERT_EQ(ended.exitCode, 0) << ended.errors;

    EXPECT_THAT(ended.output + ended.errors, Not(HasSubstr(stored().value())));
    for (const auto &entry : std::filesystem::recursive_directory_iterator(program.folder())) {
        if (entry.is_regular_file())
            EXPECT_THAT(contentsOf(entry.path()), Not(HasSubstr("vk_from_the"))) << entry.path();
    }
}

TEST_F(AccountCommands, aFullRunWithTroublesLeavesNoKeyAndNoSignedAddress) {
    const X11Session session;
    program.set("DISPLAY", qEnvironmentVariable("DISPLAY").toStdString());
    pair();
    const std::string key = stored().value();
    std::string seen;
    service.configure({{"transfer", "tus"}, {"chunkSize", 1000}});
    // Each of these is logged; two transfers are refused, of the capture and of its thumbnail.
    service.fault("PATCH", "/storage/tus", {{"resetAfterBytes", 500}}, 1, 1);
    service.fault("PUT", "/storage/put", {{"status", 403}, {"body", {{"error", "expired"}}}}, 1);
    service.fault("POST", "/confirm", {{"status", 503}});
    const auto recorded = program.run({"record", "--seconds", "1", "--upload", "--json"});
    EXPECT_EQ(recorded.exitCode, 0) << recorded.output << recorded.errors;
    EXPECT_THAT(recorded.errors, HasSubstr("confirm")) << "the troubles are not in the log";

    // Killed in the middle of the next, and looked at while it was there.
    service.fault("PATCH", "/storage/tus", {{"stallAfterBytes", 500}}, 1, 1);
    program.start({"upload", recorded.json()["file"].get<std::string>(), "--json"});
    EXPECT_TRUE(eventually([this] {
        return contentsOf(program.folder() / "data/VantrellCapture/upload-journal.json")
                   .find("tusLocation") != std::string::npos;
    }));
    for (const auto &process : std::filesystem::directory_iterator("/proc"))
        seen += contentsOf(process.path() / "cmdline");
    seen += contentsOf("/proc/" + std::to_string(program.processId()) + "/environ");
    program.signal(SIGKILL);
    const auto killed = program.finish();
    seen += recorded.output + recorded.errors + killed.output + killed.errors;
    int files = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(program.folder())) {
        if (entry.is_regular_file()) {
            ++files;
            seen += contentsOf(entry.path());
        }
    }
    EXPECT_GE(files, 5) << "movie, sidecar, thumbnail, journal, queue";
    EXPECT_THAT(seen, HasSubstr(R"("phase":"uploading")"));
    EXPECT_EQ(seen.find(key), std::string::npos);
    EXPECT_FALSE(holdsSignature(seen));

    // A signature would have been found.
    const auto projects = program.run({"list", "projects", "--json"}).json();
    const auto grant = service.call("POST", "/v1/capture/sign",
                                    {{"projectId", projects["id"]},
                                     {"kind", "image"},
                                     {"mime", "image/png"},
                                     {"bytes", 5000},
                                     {"meta", true},
                                     {"captureId", "00000000-0000-4000-8000-000000000001"}},
                                    key);
    EXPECT_TRUE(holdsSignature(grant["main"].dump())) << grant;
    EXPECT_TRUE(holdsSignature(grant["meta"].dump())) << grant;
}

TEST_F(AccountCommands, pairWaitsForTheKeyringsDialogAndNeverLosesAnApproval) {
    keyring.lock();
    KeyringPrompter prompter;
    program.start({"unpair"});
    ASSERT_TRUE(eventually([&] { return prompter.isOpen(); }));
    program.signal(SIGINT);
    program.finish();
    prompter.dismiss(); // the keyring is still there

    program.start({"pair"});
    ASSERT_TRUE(eventually([&] { return prompter.isOpen(); }));
    program.waitForLog("Waiting for its password");
    // For longer than the keyring itself is given.
    EXPECT_FALSE(eventually([this] { return !program.isRunning(); }, 6s));
    prompter.typePassword(keyring);
    const std::string page = program.nextLine();

    // Locked again, and dismissed: the key that the service has handed out is still kept.
    keyring.lock();
    answerPairing(page.substr(page.find_last_of('/') + 1), "approve");
    ASSERT_TRUE(eventually([&] { return prompter.isOpen(); }));
    prompter.dismiss();
    program.waitForLog("is stored as soon as the keyring is unlocked");
    keyring.unlock();
    const auto ended = program.finish();
    EXPECT_EQ(ended.exitCode, 0) << ended.errors;
    EXPECT_EQ(ended.output, "Connected to Vantrell\n");
    EXPECT_EQ(ended.errors.find("Waiting for its password"), ended.errors.rfind("Waiting for its password"));
    EXPECT_EQ(program.run({"status", "--json"}).json()["connected"], true);
}

TEST_F(AccountCommands, tellsTheTroublesOfAKeyringApart) {
    pair();
    keyring.lock();
    const std::string locked = failureOf({"status", "--json"});
    EXPECT_EQ(failureOf({"pair", "--json"}), locked);
    EXPECT_EQ(failureOf({"unpair", "--json"}), locked);
    keyring.suspend();
    const std::string silent = failureOf({"status", "--json"});
    keyring.resume();
    keyring.kill();
    const std::string absent = failureOf({"status", "--json"});
    EXPECT_EQ(failureOf({"pair", "--json"}), absent);
    program.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    EXPECT_EQ(failureOf({"status", "--json"}), absent);
    use(SessionBus::ofThisProcess());

    keyring.startUnlocked();
    const std::string code = beginPairing();
    keyring.kill();
    answerPairing(code, "approve");
    const std::string killed = program.finish().json()["error"];
    EXPECT_EQ(std::set({locked, silent, absent, killed}).size(), 4u) << locked << silent << absent << killed;

    // None of it took the connection away.
    keyring.startUnlocked();
    EXPECT_EQ(program.run({"status", "--json"}).json()["connected"], true);
}

TEST_F(AccountCommands, survivesTheEndOfTheSessionBus) {
    SessionBus bus;
    SecretServiceSession hung(bus);
    hung.startUnlocked();
    hung.suspend();
    use(bus);
    program.start({"status", "--json"});
    program.poll(1500ms);
    ASSERT_TRUE(program.isRunning());
    bus.kill();
    const auto ended = program.finish();
    EXPECT_EQ(ended.exitCode, 3) << ended.errors;
    EXPECT_EQ(ended.json()["keyring"], "notAnswering");
}

TEST_F(AccountCommands, statusTellsWhyThereIsNoConnection) {
    pair();
    // A refused key of the environment does not hide the stored one.
    program.set("VANTRELL_API_KEY", "vk_refused");
    EXPECT_EQ(program.run({"status", "--json"}).json()["connected"], true);
    EXPECT_EQ(program.run({"list", "projects"}).exitCode, 0);
    program.set("VANTRELL_API_KEY", "");
    service.revokeKey(stored().value());
    const auto revoked = program.run({"status", "--json"});
    EXPECT_EQ(revoked.exitCode, 3);
    EXPECT_THAT(revoked.json()["reason"].get<std::string>(), HasSubstr("does not accept the key"));
    EXPECT_TRUE(stored()); // a command only says so

    program.set("VANTRELL_API_KEY", service.createKey());
    program.set("DO_NOT_TRACK", "1");
    const auto headless = program.run({"status", "--json"});
    EXPECT_EQ(headless.json()["connected"], true) << headless.output;
    EXPECT_EQ(headless.json()["tracking"], false);
    EXPECT_EQ(headless.json()["waitingEvents"], 0);

    service.stop();
    const auto down = program.run({"status", "--json"});
    EXPECT_EQ(down.json()["connected"], true);
    EXPECT_EQ(down.json()["problem"], "Network error");
    EXPECT_EQ(failureOf({"pair", "--json"}), "Network error");
}

} // namespace
} // namespace vantrell::testing
