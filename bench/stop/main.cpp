// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// How long a clean stop takes after 1, 20 and 60 minutes of 1080p60 with two sounds (5 Mbit/s), and how much
// memory the writer took. The minutes are fed as fast as the disk takes them, without a queue; the last two
// seconds in real time.
//
//     bench_stop          TMPDIR says where the files go (about 2.4 GB at a time)

#include "Media/Movie/MovieWriter.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

using namespace vantrell;

namespace {

using SteadyClock = std::chrono::steady_clock;

double milliseconds(SteadyClock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

/// Resident memory that is the process's own: without the pages of libraries.
double privateMiB() {
    std::ifstream rollup("/proc/self/smaps_rollup");
    std::string word;
    while (rollup >> word)
        if (word == "Private_Dirty:") {
            double kib = 0;
            rollup >> kib;
            return kib / 1024;
        }
    return 0;
}

class Feeder {
public:
    explicit Feeder(MovieWriter &writer)
        : m_writer(writer),
          m_video(writer.addVideoTrack({.size = {1920, 1080}, .decoderConfiguration = {1}})),
          m_microphone(writer.addAudioTrack({.decoderConfiguration = {0x11, 0x90}, .name = "Microphone"})),
          m_system(writer.addAudioTrack({.decoderConfiguration = {0x11, 0x90}, .name = "System Audio"})) {}

    // The next picture and the sound up to it.
    void feed() {
        append(m_video, m_pictures * 1500,
               m_pictures % 600 == 0 ? 120000 : 9500 + std::size_t(m_pictures * 7919 % 1500),
               m_pictures % 600 == 0);
        ++m_pictures;
        for (; m_packets * 1024 < m_pictures * 800; ++m_packets) {
            append(m_microphone, (m_packets - 1) * 1024, 340, true);
            append(m_system, (m_packets - 1) * 1024, 340, true);
        }
    }

    double stopMs() {
        const TrackEnd ends[] = {
            {m_video, m_pictures * 1500}, {m_microphone, m_pictures * 800}, {m_system, m_pictures * 800}};
        const auto start = SteadyClock::now();
        if (!m_writer.finish(ends))
            std::exit(1);
        return milliseconds(SteadyClock::now() - start);
    }

private:
    void append(TrackId track, std::int64_t time, std::size_t size, bool isKey) {
        if (!m_writer.append(track, {std::span(m_noise).first(size), time, time, isKey}))
            std::exit(1);
    }

    MovieWriter &m_writer;
    TrackId m_video;
    TrackId m_microphone;
    TrackId m_system;
    std::vector<std::uint8_t> m_noise = std::vector<std::uint8_t>(200000, 0x5a);
    std::int64_t m_pictures = 0;
    std::int64_t m_packets = 0;
};

void measure(const std::filesystem::path &path, int minutes) {
    const double before = privateMiB();
    auto writer = MovieWriter::create(path, {.flushInterval = std::chrono::milliseconds(1)});
    if (!writer)
        std::exit(1);
    Feeder feeder(**writer);
    for (int i = 0; i < minutes * 3600 - 120; ++i) {
        feeder.feed();
        // No more may wait for the disk than in real time.
        while (i % 60 == 0 && (*writer)->bytesWritten() > std::filesystem::file_size(path))
            std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    std::this_thread::sleep_for(std::chrono::seconds(1));
    ::sync();
    const auto zero = SteadyClock::now();
    for (int i = 0; i < 120; ++i) {
        feeder.feed();
        std::this_thread::sleep_until(zero + (i + 1) * std::chrono::microseconds(16667));
    }
    const double during = privateMiB() - before;
    const std::uint64_t reserved = (*writer)->finalisationBytes();
    const double stop = feeder.stopMs();
    std::printf("%4d min: stop %6.1f ms, memory %5.1f MiB, movie %7.1f MB, reserve %5.2f MB\n", minutes, stop,
                during, double(std::filesystem::file_size(path)) / 1e6, double(reserved) / 1e6);
    std::filesystem::remove(path);
}

} // namespace

int main() {
    const char *temporary = std::getenv("TMPDIR");
    std::string folderName = std::string(temporary ? temporary : "/tmp") + "/bench_stop.XXXXXX";
    const std::filesystem::path folder = ::mkdtemp(folderName.data());
    for (const int minutes : {1, 1, 1, 20, 20, 20, 60})
        measure(folder / "movie.mov", minutes);
    std::filesystem::remove_all(folder);
    return 0;
}
