// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/V4l2Kernel.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace vantrell {

namespace {

const std::string devicePrefix = "video";

} // namespace

std::filesystem::path V4l2Kernel::folder() const {
    return "/dev";
}

std::vector<std::string> V4l2Kernel::devices() const {
    std::vector<std::string> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder(), error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().filename().string().starts_with(devicePrefix))
            found.push_back(entry->path());
    std::ranges::sort(found, {}, [](const std::string &path) {
        return std::atoi(path.c_str() + path.rfind(devicePrefix) + devicePrefix.size());
    });
    return found;
}

std::string V4l2Kernel::stableName(const std::string &device) const {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder() / "v4l" / "by-id", error), end;
         !error && entry != end; entry.increment(error)) {
        std::error_code broken;
        if (std::filesystem::equivalent(entry->path(), device, broken))
            return entry->path().filename();
    }
    return {};
}

int V4l2Kernel::open(const std::string &device) {
    return ::open(device.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
}

void V4l2Kernel::close(int fd) {
    ::close(fd);
}

int V4l2Kernel::control(int fd, unsigned long request, void *argument) {
    int result = 0;
    do
        result = ::ioctl(fd, request, argument);
    while (result < 0 && errno == EINTR);
    return result;
}

void *V4l2Kernel::map(int fd, std::size_t length, off_t offset) {
    void *const memory = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, fd, offset);
    return memory == MAP_FAILED ? nullptr : memory;
}

void V4l2Kernel::unmap(void *memory, std::size_t length) {
    ::munmap(memory, length);
}

} // namespace vantrell
