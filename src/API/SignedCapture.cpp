// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/SignedCapture.h"

namespace vantrell {

namespace {

SignedCapture::Main decodeMain(JsonReader &outer) {
    JsonReader reader(outer.object("main"), outer.pathTo("main"));
    SignedCapture::Main main{reader.string("path"), reader.string("publicUrl"), {}};
    if (!reader.error()) {
        JsonReader upload(reader.object("upload"), reader.pathTo("upload"));
        main.upload = decodeUploadDescriptor(upload);
        reader.adopt(upload);
    }
    outer.adopt(reader);
    return main;
}

std::optional<SignedCapture::SideSlot> decodeSlot(JsonReader &outer, const char *key) {
    const nlohmann::json *json = outer.optionalObject(key);
    if (!json)
        return std::nullopt;
    JsonReader reader(*json, outer.pathTo(key));
    SignedCapture::SideSlot slot{reader.string("uploadUrl"), reader.string("path")};
    outer.adopt(reader);
    return slot;
}

} // namespace

SignedCapture SignedCapture::decode(JsonReader &reader) {
    SignedCapture capture{reader.string("assetId"), reader.string("projectId"), {}, {}, {}};
    if (reader.error())
        return capture;
    capture.main = decodeMain(reader);
    capture.thumb = decodeSlot(reader, "thumb");
    capture.meta = decodeSlot(reader, "meta");
    return capture;
}

} // namespace vantrell
