// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/ApplicationIcon.h"

namespace vantrell {

std::string_view applicationIconSvg() {
    return R"svg(<?xml version="1.0" encoding="UTF-8"?>
<svg xmlns="http://www.w3.org/2000/svg" width="128" height="128" viewBox="0 0 128 128">
  <defs>
    <linearGradient id="ground" x1="0" y1="0" x2="0" y2="1">
      <stop offset="0" stop-color="#3a8277"/>
      <stop offset="1" stop-color="#24594f"/>
    </linearGradient>
  </defs>
  <rect x="6" y="6" width="116" height="116" rx="29" fill="url(#ground)"/>
  <path d="M36 51V44a8 8 0 0 1 8-8h7M77 36h7a8 8 0 0 1 8 8v7M92 77v7a8 8 0 0 1-8 8h-7M51 92h-7a8 8 0 0 1-8-8v-7"
        fill="none" stroke="#ffffff" stroke-width="8" stroke-linecap="round"/>
  <circle cx="64" cy="64" r="15" fill="#ffb4a2"/>
</svg>
)svg";
}

} // namespace vantrell
