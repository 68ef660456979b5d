// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Batch.h"
#include "UploaderProcess.h"

#include <QCoreApplication>

#include <cstdlib>
#include <ctime>
#include <iostream>
#include <string_view>

/// stress_uploads [--kills N] [--captures N] [--seed N]: uploads batches of captures to a real service that
/// has faults, with an uploader that is killed at random moments, until it was killed N times; then every
/// capture must be in the library exactly once, bytes identical.
int main(int argc, char **argv) {
    using namespace vantrell::testing;
    QCoreApplication application(argc, argv);
    int kills = 200;
    int captures = 20;
    unsigned seed = unsigned(std::time(nullptr));
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string_view option = argv[i];
        if (option == "--uploader")
            return UploaderProcess::run(argv[i + 1]);
        if (option == "--kills")
            kills = std::atoi(argv[i + 1]);
        else if (option == "--captures")
            captures = std::atoi(argv[i + 1]);
        else if (option == "--seed")
            seed = unsigned(std::atoi(argv[i + 1]));
    }
    std::cout << "seed " << seed << std::endl;

    LocalService service({.arguments = {"--transfer", "tus", "--chunk-size", "100000"}});
    int done = 0;
    for (int batches = 1; done < kills; ++batches) {
        Batch batch(service, captures, seed++);
        batch.upload();
        if (!batch.verify())
            return 1;
        done += batch.kills();
        std::cout << "batch " << batches << ": " << captures << " captures, " << batch.kills() << " kills, "
                  << batch.faults() << " faults, " << batch.bytesSentAgain() << " bytes sent again"
                  << std::endl;
    }
    std::cout << done << " kills" << std::endl;
    return 0;
}
