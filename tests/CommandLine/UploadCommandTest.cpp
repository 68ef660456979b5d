// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Program/CaptureProgram.h"

#include "Support/AtomicFile.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TestFile.h"

#include <gmock/gmock.h>

#include <csignal>
#include <sstream>

namespace vantrell::testing {

namespace {

using ::testing::HasSubstr;

class UploadCommandTest : public ::testing::Test {
protected:
    UploadCommandTest() {
        program.set("VANTRELL_API_URL", service.url());
        program.set("VANTRELL_API_KEY", key);
    }

    std::filesystem::path makePicture(const std::string &name, std::int64_t bytes) {
        const auto file = program.folder() / name;
        writeTestFile(file, bytes, std::hash<std::string>()(name));
        return file;
    }
    std::string journal() const {
        return readFile(program.folder() / "data/VantrellCapture/upload-journal.json").value_or("none");
    }
    static std::vector<nlohmann::json> linesOf(const CaptureProgram::Ended &ended) {
        std::vector<nlohmann::json> lines;
        std::istringstream text(ended.output);
        for (std::string line; std::getline(text, line);)
            lines.push_back(nlohmann::json::parse(line));
        return lines;
    }
    /// Stalls in the second chunk and waits until the program is there.
    void startAndStall(const std::filesystem::path &file) {
        service.clearFaults();
        service.fault("PATCH", "/storage/tus", {{"stallAfterBytes", 50'000}}, 1, 1);
        program.start({"upload", file, "--json"});
        ASSERT_TRUE(eventually([this] {
            return service.call("GET", "/test/faults").dump().find("\"hits\":1") != std::string::npos;
        }));
    }
    void expectUploaded(const std::filesystem::path &file) {
        int found = 0;
        for (const nlohmann::json &capture : service.captures(key)) {
            if (capture.at("name") != file.stem().string())
                continue;
            ++found;
            EXPECT_EQ(capture.at("status"), "confirmed");
            EXPECT_EQ(capture.at("sha256"), sha256Of(file));
        }
        EXPECT_EQ(found, 1) << file;
    }

    LocalService service{{.arguments = {"--transfer", "tus", "--chunk-size", "100000"}}};
    const std::string key = service.createKey();
    const std::string project = service.createProject("Tests");
    CaptureProgram program;
};

TEST_F(UploadCommandTest, uploadsFilesAndTellsEachOfThem) {
    const auto first = makePicture("first.png", 250'000);
    const auto second = makePicture("second.png", 10);
    const auto missing = program.folder() / "missing.png";
    const auto ended = program.run({"upload", first, missing, second, "--project", project, "--json"});
    EXPECT_EQ(ended.exitCode, 1);
    std::map<std::string, nlohmann::json> byFile;
    std::string errors;
    for (const nlohmann::json &line : linesOf(ended)) {
        if (line.contains("error"))
            errors += line.at("error");
        else
            byFile[line.at("file")] = line;
    }
    EXPECT_EQ(errors, "There is no file " + missing.string());
    ASSERT_EQ(byFile.size(), 2u) << ended.output;
    EXPECT_EQ(byFile[first].at("projectId"), project);
    EXPECT_TRUE(byFile[second].at("assetId").get<std::string>().starts_with("cap_"));
    expectUploaded(first);
    expectUploaded(second);
    EXPECT_EQ(journal(), "[]");
    EXPECT_EQ(program.run({"resume"}).exitCode, 0);
}

TEST_F(UploadCommandTest, leavesEverythingToResumeWhenItIsInterruptedOrKilled) {
    for (const int signal : {SIGINT, SIGKILL}) {
        service.clearLog();
        const auto file = makePicture("interrupted " + std::to_string(signal) + ".png", 350'000);
        startAndStall(file);
        if (signal == SIGINT) {
            CaptureProgram other;
            other.set("XDG_DATA_HOME", program.folder() / "data");
            other.set("VANTRELL_API_URL", service.url());
            other.set("VANTRELL_API_KEY", key);
            const auto second = other.run({"upload", file});
            EXPECT_EQ(second.exitCode, 1);
            EXPECT_THAT(second.errors, HasSubstr("Another Vantrell Capture is running"));
        }
        program.signal(signal);
        const auto ended = program.finish();
        if (signal == SIGINT) {
            EXPECT_EQ(ended.exitCode, 1);
            EXPECT_EQ(ended.json().at("error"),
                      "Interrupted: \"vantrell-capture resume\" finishes the upload");
        }
        EXPECT_THAT(journal(), HasSubstr(R"("phase":"uploading")"));

        // Naming the file again is the same as resuming it.
        const auto again =
            signal == SIGINT ? program.run({"resume", "--json"}) : program.run({"upload", file, "--json"});
        EXPECT_EQ(again.exitCode, 0) << again.errors;
        EXPECT_EQ(again.json().at("file"), file.string());
        expectUploaded(file);
        EXPECT_EQ(service.requests("/v1/capture/sign").size(), 1u);
        EXPECT_EQ(journal(), "[]");
    }
}

TEST_F(UploadCommandTest, takesOneFileForOneCaptureUnderAllItsNames) {
    const auto file = makePicture("one.png", 1000);
    const auto link = program.folder() / "link";
    std::filesystem::create_directory_symlink(program.folder(), link);
    const auto ended =
        program.run({"upload", file, program.folder() / "./one.png", link / "one.png", "--json"});
    EXPECT_EQ(ended.exitCode, 0) << ended.errors;
    EXPECT_EQ(linesOf(ended).size(), 1u) << ended.output;
    expectUploaded(file);
}

TEST_F(UploadCommandTest, uploadsAndResumesWhateverTheListOfProjectsAnswers) {
    const auto settings = program.folder() / "config/VantrellCapture/settings.ini";
    std::filesystem::create_directories(settings.parent_path());
    ASSERT_TRUE(writeFileAtomically(settings, "[General]\nselectedProjectId=" + project + "\n"));
    const auto file = makePicture("chosen.png", 1000);
    for (const nlohmann::json &answer :
         {nlohmann::json{{"status", 503}}, nlohmann::json{{"status", 200}, {"rawBody", "nonsense"}}}) {
        service.clearFaults();
        service.fault("GET", "/v1/capture/projects", answer, 0);
        service.fault("POST", "/v1/capture/sign",
                      {{"status", 403}, {"body", {{"error", "Your plan has ended"}}}});
        const auto refused = program.run({"upload", file, "--json"});
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_EQ(refused.json(),
                  (nlohmann::json{{"error", "Your plan has ended"}, {"file", file.string()}}));
        EXPECT_THAT(journal(), HasSubstr(R"("phase":"failed")"));
        const auto resumed = program.run({"resume", "--json"});
        EXPECT_EQ(resumed.exitCode, 0) << resumed.output << resumed.errors;
        EXPECT_EQ(resumed.json().value("projectId", ""), project);
    }
}

TEST_F(UploadCommandTest, endsOnCtrlCWhileItWaitsForTheServiceAtTheStart) {
    const auto file = makePicture("early.png", 1000);
    for (const std::string &command : {"upload", "resume"}) {
        for (const std::string &call : {"/v1/capture/projects", "/v1/capture/limits"}) {
            service.clearFaults();
            service.clearLog();
            service.fault("GET", call, "stall", 0);
            program.start(command == "upload" ? std::vector<std::string>{command, file, "--json"}
                                              : std::vector<std::string>{command, "--json"});
            ASSERT_TRUE(eventually([&] { return !service.requests(call).empty(); }));
            program.signal(SIGINT);
            program.poll(std::chrono::seconds(20));
            EXPECT_FALSE(program.isRunning()) << command << call;
            const auto ended = program.finish();
            EXPECT_EQ(ended.exitCode, 1);
            EXPECT_THAT(ended.json().value("error", ""), HasSubstr("Interrupted")) << command << call;
        }
    }
}

} // namespace
} // namespace vantrell::testing
