// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/UploadDescriptor.h"

namespace vantrell {

UploadDescriptor decodeUploadDescriptor(JsonReader &reader) {
    if (reader.string("kind") == "standard")
        return StandardUpload{reader.string("uploadUrl")};
    return TusUpload{reader.string("endpoint"),  reader.string("signature"),  reader.string("apiKey"),
                     reader.string("bucket"),    reader.string("objectName"), reader.string("contentType"),
                     reader.integer("chunkSize")};
}

} // namespace vantrell
