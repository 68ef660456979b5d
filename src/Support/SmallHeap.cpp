// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/SmallHeap.h"

#include <malloc.h>

namespace vantrell {

void keepHeapSmall() {
    ::mallopt(M_MMAP_THRESHOLD, 512 * 1024);
    // Nor does it need a heap for each thread, with what is left over in each: few of them ask often.
    ::mallopt(M_ARENA_MAX, 2);
}

} // namespace vantrell
