// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieRecovery.h"
#include "SyntheticMovie.h"
#include "SystemCallFaults.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <thread>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

using namespace vantrell;
using namespace vantrell::testing;

namespace {

double hostNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

int finish(MovieWriter &writer, const std::vector<TrackId> &tracks, int pictures) {
    const TrackEnd ends[] = {{tracks[0], std::int64_t(pictures) * SyntheticMovie::pictureTicks}};
    return writer.finish(ends) ? 0 : 1;
}

/// write MOVIE CALL: a short movie with many flushes; killed at the CALL-th system call.
int writeQuickly(const char *path, int call) {
    SystemCallFaults::arm(SystemCallFaults::Kind::kill, call);
    auto writer = MovieWriter::create(path, {.elapsed = [] { return 0.1; },
                                             .flushInterval = std::chrono::milliseconds(2),
                                             .syncInterval = std::chrono::milliseconds(4)});
    if (!writer)
        return 1;
    const std::vector<TrackId> tracks = SyntheticMovie::addTracks(**writer);
    for (int number = 0; number < 40; ++number) {
        for (const TrackId track : tracks)
            if (!SyntheticMovie::append(**writer, track, number))
                return 1;
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    return finish(**writer, tracks, 40);
}

/// record MOVIE PROGRESS: pictures at 60 a second until killed; PROGRESS holds when each was handed over.
int recordInRealTime(const char *path, const char *progress) {
    const int fd = ::open(progress, O_RDWR);
    auto *handedOver = static_cast<volatile double *>(
        ::mmap(nullptr, 3600 * sizeof(double), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0));
    const double zero = hostNow();
    auto writer = MovieWriter::create(path, {.elapsed = [zero] { return hostNow() - zero; }});
    if (!writer)
        return 1;
    const std::vector<TrackId> tracks = SyntheticMovie::addTracks(**writer);
    for (int number = 0; number < 3600; ++number) {
        for (const TrackId track : tracks)
            if (!SyntheticMovie::append(**writer, track, number))
                return 1;
        handedOver[number] = hostNow();
        const double due = zero + (number + 1) / 60.0;
        std::this_thread::sleep_for(std::chrono::duration<double>(due - hostNow()));
    }
    return finish(**writer, tracks, 3600);
}

int recover(const char *path, int call) {
    SystemCallFaults::arm(SystemCallFaults::Kind::kill, call);
    return recoverMovie(path) ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 4)
        return 2;
    if (std::strcmp(argv[1], "write") == 0)
        return writeQuickly(argv[2], std::atoi(argv[3]));
    if (std::strcmp(argv[1], "record") == 0)
        return recordInRealTime(argv[2], argv[3]);
    return recover(argv[2], std::atoi(argv[3]));
}
