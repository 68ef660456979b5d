// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/Sentence.h"

#include <QCoreApplication>

namespace vantrell {

namespace {

constexpr const char *sentences[] = {
    QT_TRANSLATE_NOOP("Sentences", "Capture Area"),
    QT_TRANSLATE_NOOP("Sentences", "Capture Window"),
    QT_TRANSLATE_NOOP("Sentences", "Capture Full Screen"),
    QT_TRANSLATE_NOOP("Sentences", "Start Recording…"),
    QT_TRANSLATE_NOOP("Sentences", "Stop Recording"),
    QT_TRANSLATE_NOOP("Sentences", "Record Microphone"),
    QT_TRANSLATE_NOOP("Sentences", "Another program holds the keys of %1"),
    QT_TRANSLATE_NOOP("Sentences", "Recording in progress"),
    QT_TRANSLATE_NOOP("Sentences", "Uploading 1 capture…"),
    QT_TRANSLATE_N_NOOP("Sentences", "Uploading %n captures…"),
    QT_TRANSLATE_NOOP("Sentences", "Upload to…"),
    QT_TRANSLATE_NOOP("Sentences", "Upload to: %1"),
    QT_TRANSLATE_NOOP("Sentences", "No projects yet. Create one in Vantrell"),
    QT_TRANSLATE_NOOP("Sentences", "Refresh Projects"),
    QT_TRANSLATE_NOOP("Sentences", "Connect to Vantrell…"),
    QT_TRANSLATE_NOOP("Sentences", "Disconnect from Vantrell"),
    QT_TRANSLATE_NOOP("Sentences", "Waiting for approval in browser…"),
    QT_TRANSLATE_NOOP("Sentences", "Reopen Approval Page"),
    QT_TRANSLATE_NOOP("Sentences", "Cancel Pairing"),
    QT_TRANSLATE_NOOP("Sentences", "Open Vantrell"),
    QT_TRANSLATE_NOOP("Sentences", "Check for Updates…"),
    QT_TRANSLATE_NOOP("Sentences", "Update to %1"),
    QT_TRANSLATE_NOOP("Sentences", "Launch at Login"),
    QT_TRANSLATE_NOOP("Sentences", "Quit Vantrell Capture"),
    QT_TRANSLATE_NOOP("Sentences", "Screen Recording permission needed"),
    QT_TRANSLATE_NOOP("Sentences", "Enable Screen Recording…"),
    QT_TRANSLATE_NOOP("Sentences", "Vantrell Capture, recording"),
    QT_TRANSLATE_NOOP("Sentences", "Vantrell Capture, uploading"),
    QT_TRANSLATE_NOOP("Sentences", "Pause"),
    QT_TRANSLATE_NOOP("Sentences", "Resume"),
    QT_TRANSLATE_NOOP("Sentences", "Retry"),
    QT_TRANSLATE_NOOP("Sentences", "OK"),
    QT_TRANSLATE_NOOP("Sentences", "Later"),
    QT_TRANSLATE_NOOP("Sentences", "Not Now"),
    QT_TRANSLATE_NOOP("Sentences", "Continue"),
    QT_TRANSLATE_NOOP("Sentences", "Open Folder"),
    QT_TRANSLATE_NOOP("Sentences", "Could not open the file"),
    QT_TRANSLATE_NOOP("Sentences", "There is no file %1"),
    QT_TRANSLATE_NOOP("Sentences", "%1 is neither a .mov recording nor a .png screenshot"),
    QT_TRANSLATE_NOOP("Sentences", "Could not connect to Vantrell"),
    QT_TRANSLATE_NOOP("Sentences", "Vantrell Capture ended unexpectedly"),
    QT_TRANSLATE_NOOP(
        "Sentences", "What it was doing is in a file on this computer, for a bug report if you want to write "
                     "one. Nothing was sent anywhere. A recording that was cut off is on the shelf."),
    QT_TRANSLATE_NOOP("Sentences", "Move Vantrell Capture to Applications"),
    QT_TRANSLATE_NOOP("Sentences", "Move to Applications"),
    QT_TRANSLATE_NOOP("Sentences",
                      "Vantrell Capture is running from the disk image. %1 cannot remember the Screen "
                      "Recording permission from there, so the app will move itself into Applications and "
                      "reopen."),
    QT_TRANSLATE_NOOP("Sentences", "Could not move Vantrell Capture"),
    QT_TRANSLATE_NOOP("Sentences",
                      "%1\n\nDrag Vantrell Capture into your Applications folder and open it from there."),
    QT_TRANSLATE_NOOP(
        "Sentences", "Vantrell Capture needs %1 Screen Recording permission. You will approve once, then the "
                     "app restarts."),
    QT_TRANSLATE_NOOP("Sentences", "Allow Vantrell Capture to record the screen"),
    QT_TRANSLATE_NOOP(
        "Sentences", "%1 asks for this once. Turn on Vantrell Capture under Screen & System Audio Recording, "
                     "and this window will close and reopen the app for you automatically."),
    QT_TRANSLATE_NOOP("Sentences", "Updates come with your system"),
    QT_TRANSLATE_NOOP("Sentences", "Could not check for updates"),
    QT_TRANSLATE_NOOP("Sentences", "Vantrell Capture is up to date"),
    QT_TRANSLATE_NOOP("Sentences", "Version %1 is the newest there is."),
    QT_TRANSLATE_NOOP("Sentences", "Vantrell Capture %1 is available"),
    QT_TRANSLATE_NOOP("Sentences",
                      "You have version %1. The new one is downloaded and put in its place; then the app "
                      "restarts."),
    QT_TRANSLATE_NOOP("Sentences", "Install and Restart"),
    QT_TRANSLATE_NOOP("Sentences", "Vantrell Capture %1 is ready"),
    QT_TRANSLATE_NOOP("Sentences", "The app restarts with it."),
    QT_TRANSLATE_NOOP("Sentences", "Restart Now"),
    QT_TRANSLATE_NOOP("Sentences", "Could not update Vantrell Capture"),
    QT_TRANSLATE_NOOP("Sentences", "The server with the updates cannot be reached"),
    QT_TRANSLATE_NOOP("Sentences", "The list of updates is not from Vantrell"),
    QT_TRANSLATE_NOOP("Sentences", "The update arrived damaged"),
    QT_TRANSLATE_NOOP("Sentences", "The update could not be put in place"),
    QT_TRANSLATE_NOOP("Sentences", "The update could not be put in place: %1"),
    QT_TRANSLATE_NOOP("Sentences", "The update was cancelled"),
    QT_TRANSLATE_NOOP("Sentences", "Flatpak brings the updates of Vantrell Capture"),
    QT_TRANSLATE_NOOP("Sentences", "Snap brings the updates of Vantrell Capture"),
    QT_TRANSLATE_NOOP("Sentences", "Your system brings the updates of Vantrell Capture"),
    QT_TRANSLATE_NOOP("Sentences",
                      "Your system's package manager (%1) brings the updates of Vantrell Capture"),
    QT_TRANSLATE_NOOP("Sentences", "Uploading…"),
    QT_TRANSLATE_NOOP("Sentences", "Uploading %1%"),
    QT_TRANSLATE_NOOP("Sentences", "Processing…"),
    QT_TRANSLATE_NOOP("Sentences", "In your library"),
    QT_TRANSLATE_NOOP("Sentences", "Pick a project in the menu bar first"),
    QT_TRANSLATE_NOOP("Sentences", "Upload failed"),
    QT_TRANSLATE_NOOP("Sentences", "Upload failed. Check your connection."),
    QT_TRANSLATE_NOOP("Sentences", "Connection to Vantrell expired. Reconnect from the menu bar."),
    QT_TRANSLATE_NOOP("Sentences", "This recording is over your plan's size limit."),
    QT_TRANSLATE_NOOP("Sentences", "That project was deleted. Pick another, then retry."),
    QT_TRANSLATE_NOOP("Sentences", "The recording file was cleaned up and can't be re-uploaded"),
    QT_TRANSLATE_NOOP("Sentences", "This capture's file is gone"),
    QT_TRANSLATE_NOOP("Sentences", "Connect to Vantrell in the menu bar first"),
    QT_TRANSLATE_NOOP("Sentences", "Nothing to upload. The recording never finished saving."),
    QT_TRANSLATE_NOOP("Sentences", "Screen recording"),
    QT_TRANSLATE_NOOP("Sentences", "Screenshot"),
    QT_TRANSLATE_NOOP("Sentences", "Screen recording (recovered)"),
    QT_TRANSLATE_NOOP("Sentences", "Camera recording"),
    QT_TRANSLATE_NOOP("Sentences", "Camera recording failed to save"),
    QT_TRANSLATE_NOOP("Sentences", "No camera"),
    QT_TRANSLATE_NOOP("Sentences", "Recorded without camera: %1"),
    QT_TRANSLATE_NOOP("Sentences", "Recorded without sound: %1"),
    QT_TRANSLATE_NOOP("Sentences", "Recording failed to save: %1"),
    QT_TRANSLATE_NOOP("Sentences", "The recording ended unexpectedly"),
    QT_TRANSLATE_NOOP("Sentences", "Saving the recording timed out"),
    QT_TRANSLATE_NOOP("Sentences", "Not enough free disk space to record (2 GB needed)"),
    QT_TRANSLATE_NOOP("Sentences", "No sound server is running on this desktop"),
    QT_TRANSLATE_NOOP("Sentences", "The chosen microphone is not connected"),
    QT_TRANSLATE_NOOP("Sentences", "No microphone is connected"),
    QT_TRANSLATE_NOOP("Sentences", "The sound server does not answer"),
    QT_TRANSLATE_NOOP("Sentences", "Cameras cannot be used on this desktop"),
    QT_TRANSLATE_NOOP("Sentences", "No camera is connected"),
    QT_TRANSLATE_NOOP("Sentences", "The camera is in use by another program"),
    QT_TRANSLATE_NOOP("Sentences", "The desktop does not allow the use of cameras"),
    QT_TRANSLATE_NOOP("Sentences", "The camera sends no picture"),
    QT_TRANSLATE_NOOP("Sentences", "The camera was disconnected"),
    QT_TRANSLATE_NOOP("Sentences", "The desktop's camera service does not answer"),
    QT_TRANSLATE_NOOP("Sentences", "Request failed (%1)"),
    QT_TRANSLATE_NOOP("Sentences", "Network error"),
    QT_TRANSLATE_NOOP("Sentences", "Capture already uploaded"),
    QT_TRANSLATE_NOOP("Sentences", "Not connected to Vantrell"),
    QT_TRANSLATE_NOOP("Sentences", "Unexpected server response"),
    QT_TRANSLATE_NOOP("Sentences", "Could not encode the capture"),
    QT_TRANSLATE_NOOP("Sentences", "The file changed while it was being uploaded"),
    QT_TRANSLATE_NOOP("Sentences", "The connection was denied on the approval page"),
    QT_TRANSLATE_NOOP("Sentences", "The connection was not approved in time"),
    QT_TRANSLATE_NOOP("Sentences", "The connection's code was already used"),
    QT_TRANSLATE_NOOP("Sentences", "The connection was approved, but could not be stored"),
    QT_TRANSLATE_NOOP("Sentences",
                      "The connection was approved and is stored as soon as the keyring is unlocked"),
    QT_TRANSLATE_NOOP("Sentences", "The keyring does not answer"),
    QT_TRANSLATE_NOOP(
        "Sentences",
        "The keyring has no default keyring to store the connection in; create one and try again"),
    QT_TRANSLATE_NOOP("Sentences", "The keyring is locked; unlock it to use the connection"),
    QT_TRANSLATE_NOOP("Sentences", "The keyring refused access to the connection"),
    QT_TRANSLATE_NOOP("Sentences",
                      "This desktop has no keyring (Secret Service), such as GNOME Keyring, KWallet or "
                      "KeePassXC"),
};

} // namespace

std::span<const char *const> shownSentences() {
    return sentences;
}

} // namespace vantrell
