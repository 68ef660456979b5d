// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/AppDelegate.h"
#include "Platform/Platform.h"
#include "Support/TaskScope.h"
#include "Upload/UploadEnd.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vantrell {

/// The application on the session bus: org.freedesktop.Application and an interface of its own. Until the
/// application has been launched the methods of its own interface answer with an error, and calls of the
/// other wait: they come from the desktop, which starts programs by them. Main thread.
class BusObject : public QDBusVirtualObject {
public:
    /// `executable` is what runs: the program's file.
    BusObject(QDBusConnection bus, std::string executable);

    /// From now on the methods do something. Delegate and platform outlive the object.
    void serve(AppDelegate &delegate, Platform &platform, UserInterface &ui);
    /// The application has been launched: does what the desktop wanted meanwhile.
    void answerEarlyCalls();

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    using Arguments = QVariantList;
    /// What a method answers at once; none when the answer follows later.
    using Answer = std::optional<QDBusMessage>;
    using Method = Answer (BusObject::*)(const QDBusMessage &);

    static const std::map<QString, Method> &methods();
    /// The bus lets in whom its rules allow; the application serves its user alone.
    bool isOwnUser(const QString &caller);
    Answer standardMethod(const QDBusMessage &call);
    Answer property(const QDBusMessage &call);
    bool activateAction(const QString &action);

    Answer showTool(const QDBusMessage &call);
    Answer start(const QDBusMessage &call);
    Answer toggle(const QDBusMessage &call);
    Answer pause(const QDBusMessage &call);
    Answer stop(const QDBusMessage &call);
    Answer discard(const QDBusMessage &call);
    Answer quit(const QDBusMessage &call);
    Answer status(const QDBusMessage &call);
    Answer items(const QDBusMessage &call);
    Answer upload(const QDBusMessage &call);
    Answer resume(const QDBusMessage &call);
    Answer awaitUpload(const QDBusMessage &call);
    Answer progress(const QDBusMessage &call);
    Answer recover(const QDBusMessage &call);
    Answer unpair(const QDBusMessage &call);

    Task<> openFiles(QDBusMessage call, std::stop_token stop);
    Task<> uploadFiles(QDBusMessage call, std::stop_token stop);
    Task<> resumeUploads(QDBusMessage call, std::stop_token stop);
    Task<bool> isConnected(QDBusMessage call, std::stop_token stop);
    std::optional<std::string> projectFor(const QString &asked) const;
    void uploadEnded(const UploadEnd &end);
    void answerEnd(const QDBusMessage &call, const UploadEnd &end);
    void tellStatus();
    QVariantMap statusMap() const;

    QDBusConnection m_bus;
    const std::string m_executable;
    /// The last caller that was let in.
    QString m_knownCaller;
    AppDelegate *m_delegate = nullptr;
    Platform *m_platform = nullptr;
    UserInterface *m_ui = nullptr;
    Observation m_observation;
    QVariantMap m_toldStatus;
    std::vector<QDBusMessage> m_early;
    /// Who waits for the end of an upload.
    std::multimap<QUuid, QDBusMessage> m_waiting;
    TaskScope m_scope;
};

} // namespace vantrell
