// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Network/TestCertificate.h"

#include <cstdlib>
#include <iostream>

namespace vantrell::testing {

void makeTestCertificate(const std::filesystem::path &folder) {
    const std::string command = "openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=localhost "
                                "-addext subjectAltName=IP:127.0.0.1,DNS:localhost -keyout '" +
                                (folder / "key.pem").string() + "' -out '" +
                                (folder / "authority.pem").string() + "' 2>/dev/null";
    if (std::system(command.c_str()) != 0) {
        std::cerr << "openssl could not make a certificate" << std::endl;
        std::exit(1);
    }
}

} // namespace vantrell::testing
