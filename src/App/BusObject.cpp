// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/BusObject.h"

#include "App/OutcomeOf.h"
#include "Session/ApplicationBus.h"
#include "Session/CaptureFile.h"
#include "Support/BlockingWork.h"
#include "Support/FilePath.h"
#include "Support/Log.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QUrl>

#include <unistd.h>

#include <algorithm>

namespace vantrell {

namespace {

constexpr const char *introspection = R"(
  <interface name="org.freedesktop.Application">
    <method name="Activate"><arg type="a{sv}" name="platform_data" direction="in"/></method>
    <method name="Open"><arg type="as" name="uris" direction="in"/><arg type="a{sv}" name="platform_data" direction="in"/></method>
    <method name="ActivateAction"><arg type="s" name="action_name" direction="in"/><arg type="av" name="parameter" direction="in"/><arg type="a{sv}" name="platform_data" direction="in"/></method>
  </interface>
  <interface name="app.vantrell.Capture">
    <property name="Version" type="s" access="read"/>
    <property name="Executable" type="s" access="read"/>
    <method name="ShowTool"><arg type="s" name="tool" direction="in"/></method>
    <method name="Start"><arg type="a{sv}" name="what" direction="in"/></method>
    <method name="Toggle"/>
    <method name="Pause"/>
    <method name="Stop"/>
    <method name="Discard"><arg type="b" name="restart" direction="in"/></method>
    <method name="Quit"/>
    <method name="Status"><arg type="a{sv}" name="status" direction="out"/></method>
    <method name="Items"><arg type="aa{sv}" name="cards" direction="out"/></method>
    <method name="Upload"><arg type="as" name="files" direction="in"/><arg type="s" name="project" direction="in"/><arg type="as" name="ids" direction="out"/><arg type="as" name="errors" direction="out"/></method>
    <method name="Resume"><arg type="as" name="ids" direction="out"/></method>
    <method name="AwaitUpload"><arg type="s" name="id" direction="in"/><arg type="s" name="file" direction="out"/><arg type="s" name="project" direction="out"/><arg type="s" name="asset" direction="out"/><arg type="s" name="error" direction="out"/></method>
    <method name="Progress"><arg type="as" name="ids" direction="in"/><arg type="ad" name="progress" direction="out"/></method>
    <method name="Recover"/>
    <method name="Unpair"/>
    <signal name="StatusChanged"><arg type="a{sv}" name="status"/></signal>
    <signal name="UploadEnded"><arg type="s" name="id"/><arg type="s" name="file"/><arg type="s" name="project"/><arg type="s" name="asset"/><arg type="s" name="error"/></signal>
  </interface>
)";

/// A desktop sends one or two; whatever sends more is broken.
constexpr std::size_t mostEarlyCalls = 32;

QString textOf(const std::string &text) {
    return QString::fromStdString(text);
}

QString textOf(const QUuid &id) {
    return id.toString(QUuid::WithoutBraces);
}

QDBusMessage failure(const QDBusMessage &call, const std::string &sentence) {
    return call.createErrorReply(QString::fromLatin1(applicationBus::failed), textOf(sentence));
}

QString textArgument(const QDBusMessage &call, int index) {
    return call.arguments().value(index).toString();
}

QVariantMap mapArgument(const QDBusMessage &call, int index) {
    const QVariant value = call.arguments().value(index);
    return value.canConvert<QDBusArgument>() ? qdbus_cast<QVariantMap>(value.value<QDBusArgument>())
                                             : value.toMap();
}

std::optional<ToolMode> toolNamed(const QString &name) {
    for (const ToolMode tool : {ToolMode::area, ToolMode::window, ToolMode::screen})
        if (name.toStdString() == spelling(tool))
            return tool;
    return std::nullopt;
}

QString stateOf(const ShelfItem &item) {
    struct Name {
        QString operator()(const ShelfItem::Uploading &) const { return QStringLiteral("uploading"); }
        QString operator()(const ShelfItem::Done &) const { return QStringLiteral("done"); }
        QString operator()(const ShelfItem::Failed &) const { return QStringLiteral("failed"); }
        QString operator()(const ShelfItem::Processing &) const { return QStringLiteral("processing"); }
        QString operator()(const ShelfItem::NeedsProject &) const { return QStringLiteral("needsProject"); }
    };
    return std::visit(Name(), item.status);
}

} // namespace

BusObject::BusObject(QDBusConnection bus, std::string executable)
    : m_bus(std::move(bus)), m_executable(std::move(executable)) {}

void BusObject::serve(AppDelegate &delegate, Platform &platform, UserInterface &ui) {
    m_delegate = &delegate;
    m_platform = &platform;
    m_ui = &ui;
    m_observation = delegate.observe([this] { tellStatus(); });
    delegate.uploads().onEnd = [this](const UploadEnd &end) { uploadEnded(end); };
}

void BusObject::answerEarlyCalls() {
    for (const QDBusMessage &call : std::exchange(m_early, {}))
        handleMessage(call, m_bus);
}

QString BusObject::introspect(const QString &) const {
    return QString::fromLatin1(introspection);
}

bool BusObject::handleMessage(const QDBusMessage &message, const QDBusConnection &) {
    if (message.type() != QDBusMessage::MethodCallMessage)
        return false;
    const QString interface = message.interface();
    Answer answer;
    if (!isOwnUser(message.service())) {
        answer =
            message.createErrorReply(QDBusError::AccessDenied,
                                     QStringLiteral("Only the user of this session may use the application"));
    } else if (interface == QLatin1String("org.freedesktop.DBus.Properties")) {
        answer = property(message);
    } else if (!m_delegate && interface == QLatin1String(applicationBus::standardInterface) &&
               m_early.size() < mostEarlyCalls) {
        // The desktop has started us for it, and it asks only once.
        message.setDelayedReply(true);
        m_early.push_back(message);
    } else if (!m_delegate) {
        answer = message.createErrorReply(QString::fromLatin1(applicationBus::starting),
                                          QStringLiteral("The application is starting"));
    } else if (interface == QLatin1String(applicationBus::standardInterface)) {
        answer = standardMethod(message);
    } else if (interface.isEmpty() || interface == QLatin1String(applicationBus::interface)) {
        const auto found = methods().find(message.member());
        if (found == methods().end())
            return false;
        answer = (this->*found->second)(message);
    } else {
        return false;
    }
    if (answer)
        m_bus.send(*answer);
    return true;
}

bool BusObject::isOwnUser(const QString &caller) {
    // The bus never gives a name of this kind twice.
    if (caller != m_knownCaller) {
        const QDBusReply<uint> user = m_bus.interface()->serviceUid(caller);
        if (!user.isValid() || user.value() != ::geteuid())
            return false;
        m_knownCaller = caller;
    }
    return true;
}

const std::map<QString, BusObject::Method> &BusObject::methods() {
    static const std::map<QString, Method> all{
        {QStringLiteral("ShowTool"), &BusObject::showTool},
        {QStringLiteral("Start"), &BusObject::start},
        {QStringLiteral("Toggle"), &BusObject::toggle},
        {QStringLiteral("Pause"), &BusObject::pause},
        {QStringLiteral("Stop"), &BusObject::stop},
        {QStringLiteral("Discard"), &BusObject::discard},
        {QStringLiteral("Quit"), &BusObject::quit},
        {QStringLiteral("Status"), &BusObject::status},
        {QStringLiteral("Items"), &BusObject::items},
        {QStringLiteral("Upload"), &BusObject::upload},
        {QStringLiteral("Resume"), &BusObject::resume},
        {QStringLiteral("AwaitUpload"), &BusObject::awaitUpload},
        {QStringLiteral("Progress"), &BusObject::progress},
        {QStringLiteral("Recover"), &BusObject::recover},
        {QStringLiteral("Unpair"), &BusObject::unpair},
    };
    return all;
}

BusObject::Answer BusObject::property(const QDBusMessage &call) {
    const QVariantMap all{{QStringLiteral("Version"), QStringLiteral(VANTRELL_VERSION)},
                          {QStringLiteral("Executable"), textOf(m_executable)}};
    const bool isOurs = textArgument(call, 0) == QLatin1String(applicationBus::interface);
    if (call.member() == QLatin1String("GetAll"))
        return call.createReply(isOurs ? all : QVariantMap());
    const auto found = all.find(textArgument(call, 1));
    if (call.member() != QLatin1String("Get") || !isOurs || found == all.end())
        return call.createErrorReply(QDBusError::UnknownProperty, QStringLiteral("No such property"));
    return call.createReply(QVariant::fromValue(QDBusVariant(*found)));
}

BusObject::Answer BusObject::standardMethod(const QDBusMessage &call) {
    if (call.member() == QLatin1String("Activate")) {
        m_delegate->applicationShouldHandleReopen();
        return call.createReply();
    }
    if (call.member() == QLatin1String("Open")) {
        m_scope.start(this, &BusObject::openFiles, call);
        return std::nullopt;
    }
    if (call.member() == QLatin1String("ActivateAction") && activateAction(textArgument(call, 0)))
        return call.createReply();
    return call.createErrorReply(QDBusError::UnknownMethod, QStringLiteral("No such action"));
}

bool BusObject::activateAction(const QString &action) {
    // As the desktop entry names them.
    if (action == QLatin1String("capture-area"))
        m_delegate->showCaptureUI(ToolMode::area);
    else if (action == QLatin1String("capture-window"))
        m_delegate->showCaptureUI(ToolMode::window);
    else if (action == QLatin1String("capture-screen"))
        m_delegate->showCaptureUI(ToolMode::screen);
    else if (action == QLatin1String("toggle-recording"))
        m_delegate->toggleRecording();
    else if (action == QLatin1String("pause"))
        m_delegate->togglePause();
    else if (action == QLatin1String("stop"))
        m_delegate->stopRecording();
    else if (action == QLatin1String("shelf"))
        m_ui->focusShelf();
    else if (action == QLatin1String("quit"))
        m_delegate->terminate();
    else
        return false;
    return true;
}

BusObject::Answer BusObject::showTool(const QDBusMessage &call) {
    const auto tool = toolNamed(textArgument(call, 0));
    if (!tool)
        return failure(call, "There is no such tool");
    m_delegate->showCaptureUI(*tool);
    return call.createReply();
}

BusObject::Answer BusObject::start(const QDBusMessage &call) {
    auto outcome = outcomeOf(*m_platform->capture, mapArgument(call, 0));
    if (!outcome)
        return failure(call, outcome.error());
    m_delegate->startRecording(std::move(*outcome));
    return call.createReply();
}

BusObject::Answer BusObject::toggle(const QDBusMessage &call) {
    m_delegate->toggleRecording();
    return call.createReply();
}

BusObject::Answer BusObject::pause(const QDBusMessage &call) {
    if (!m_delegate->recording().isRecording())
        return failure(call, "Nothing is being recorded");
    m_delegate->togglePause();
    return call.createReply();
}

BusObject::Answer BusObject::stop(const QDBusMessage &call) {
    const RecordingFlow &recording = m_delegate->recording();
    if (!recording.isRecording() && !recording.isStartingRecording())
        return failure(call, "Nothing is being recorded");
    m_delegate->stopRecording();
    return call.createReply();
}

BusObject::Answer BusObject::discard(const QDBusMessage &call) {
    if (!m_delegate->recording().isRecording())
        return failure(call, "Nothing is being recorded");
    m_delegate->recording().discardRecording(call.arguments().value(0).toBool());
    return call.createReply();
}

BusObject::Answer BusObject::quit(const QDBusMessage &call) {
    // The answer first: the process may be gone in a moment.
    m_bus.send(call.createReply());
    m_delegate->terminate();
    return std::nullopt;
}

QVariantMap BusObject::statusMap() const {
    const RecordingFlow &recording = m_delegate->recording();
    QString state = QStringLiteral("idle");
    if (recording.isRecording())
        state = recording.isPaused() ? QStringLiteral("paused") : QStringLiteral("recording");
    else if (recording.isStartingRecording())
        state = QStringLiteral("starting");
    else if (recording.isFinalizingRecording())
        state = QStringLiteral("finalizing");
    const std::optional<PlatformError> noKeys = m_delegate->hotKeys().problem();
    QStringList failedKeys;
    for (const auto &[action, error] : m_delegate->hotKeys().failedHotKeys())
        failedKeys.append(QString::fromLatin1(nameOf(action)));
    return {{QStringLiteral("state"), state},
            {QStringLiteral("connected"), m_delegate->account().isPaired()},
            {QStringLiteral("uploading"), m_delegate->uploadingCount()},
            {QStringLiteral("tray"), textOf(m_ui->trayHost().value_or(""))},
            {QStringLiteral("failedHotKeys"), failedKeys},
            {QStringLiteral("hotKeysHint"), textOf(noKeys ? noKeys->message : std::string())}};
}

void BusObject::tellStatus() {
    const QVariantMap now = statusMap();
    if (now == m_toldStatus)
        return;
    m_toldStatus = now;
    QDBusMessage signal = QDBusMessage::createSignal(QString::fromLatin1(applicationBus::path),
                                                     QString::fromLatin1(applicationBus::interface),
                                                     QStringLiteral("StatusChanged"));
    signal << now;
    m_bus.send(signal);
}

BusObject::Answer BusObject::status(const QDBusMessage &call) {
    QVariantMap now = statusMap();
    now.insert(QStringLiteral("elapsedSeconds"), m_delegate->recording().elapsedSeconds());
    return call.createReply(now);
}

BusObject::Answer BusObject::items(const QDBusMessage &call) {
    QDBusArgument cards;
    cards.beginArray(QMetaType::fromType<QVariantMap>());
    for (const ShelfItem &item : m_delegate->uploads().shelf().items()) {
        QVariantMap card{{QStringLiteral("id"), textOf(item.id)},
                         {QStringLiteral("title"), textOf(item.title())},
                         {QStringLiteral("state"), stateOf(item)},
                         {QStringLiteral("text"), textOf(item.statusText())}};
        if (const auto file = item.fileURL())
            card.insert(QStringLiteral("file"), textOf(textOfPath(*file)));
        if (const auto *uploading = std::get_if<ShelfItem::Uploading>(&item.status))
            card.insert(QStringLiteral("progress"), uploading->progress);
        cards << card;
    }
    cards.endArray();
    return call.createReply(QVariant::fromValue(cards));
}

Task<bool> BusObject::isConnected(QDBusMessage call, std::stop_token stop) {
    co_await m_delegate->account().pairing().ready(stop);
    if (stop.stop_requested() || m_delegate->account().isPaired())
        co_return !stop.stop_requested();
    m_bus.send(call.createErrorReply(QString::fromLatin1(applicationBus::notConnected),
                                     textOf(APIError(APIError::NotPaired{}).description())));
    co_return false;
}

std::optional<std::string> BusObject::projectFor(const QString &asked) const {
    if (!asked.isEmpty())
        return asked.toStdString();
    if (auto known = ServiceSession::knownProject(std::nullopt))
        return known;
    const std::vector<TargetProject> &projects = m_delegate->account().projects();
    return projects.empty() ? std::nullopt : std::optional(projects.front().id);
}

BusObject::Answer BusObject::upload(const QDBusMessage &call) {
    m_scope.start(this, &BusObject::uploadFiles, call);
    return std::nullopt;
}

Task<> BusObject::uploadFiles(QDBusMessage call, std::stop_token stop) {
    if (!co_await isConnected(call, stop))
        co_return;
    const auto project = projectFor(textArgument(call, 1));
    QStringList ids;
    QStringList errors;
    const QStringList files = call.arguments().value(0).toStringList();
    for (const QString &file : files) {
        const std::filesystem::path path = std::filesystem::path(file.toStdString());
        auto capture = co_await runBlocking([path] { return readCaptureFile(path); }, stop);
        const auto *const sentence = capture ? nullptr : std::get_if<std::string>(&capture.error());
        if (!capture && !sentence)
            co_return;
        ids.append(capture ? textOf(m_delegate->uploads().add(std::move(*capture), project)) : QString());
        errors.append(sentence ? textOf(*sentence) : QString());
    }
    // Whoever asked may delete or end what it has once it is told: the journal has it first.
    if (co_await m_delegate->uploads().written(stop))
        m_bus.send(call.createReply({ids, errors}));
}

Task<> BusObject::openFiles(QDBusMessage call, std::stop_token stop) {
    m_bus.send(call.createReply());
    // Started for this call, it may not know yet that it is connected: the card would ask for that.
    co_await m_delegate->account().pairing().ready(stop);
    for (const QString &uri : call.arguments().value(0).toStringList()) {
        const std::filesystem::path path(QUrl(uri).toLocalFile().toStdString());
        auto capture = co_await runBlocking([path] { return readCaptureFile(path); }, stop);
        if (capture) {
            m_delegate->handover().deliver(std::make_shared<const CaptureResult>(std::move(*capture)), {});
            continue;
        }
        const auto *const sentence = std::get_if<std::string>(&capture.error());
        if (!sentence)
            co_return;
        // A file manager shows no errors: whoever opened the file looks at the screen.
        co_await m_ui->ask("Could not open the file", *sentence, {"OK"}, stop);
    }
}

BusObject::Answer BusObject::resume(const QDBusMessage &call) {
    m_scope.start(this, &BusObject::resumeUploads, call);
    return std::nullopt;
}

Task<> BusObject::resumeUploads(QDBusMessage call, std::stop_token stop) {
    if (!co_await isConnected(call, stop))
        co_return;
    QStringList ids;
    UploadRun &uploads = m_delegate->uploads();
    for (const ShelfItem &item : std::vector(uploads.shelf().items()))
        if (item.canRetry() && item.entryId)
            m_delegate->handover().retry(item);
    for (const UploadJournalEntry &entry : uploads.journal().entries())
        ids.append(textOf(entry.captureId));
    m_bus.send(call.createReply(QVariant(ids)));
}

BusObject::Answer BusObject::awaitUpload(const QDBusMessage &call) {
    const QUuid id(textArgument(call, 0));
    UploadRun &uploads = m_delegate->uploads();
    const UploadEnd *const end = uploads.endOf(id);
    const UploadJournalEntry *const entry = uploads.journal().find(id);
    const bool isParked = entry && entry->phase == UploadJournalEntry::Phase::failed;
    if (end && (!entry || isParked)) {
        answerEnd(call, *end);
    } else if (isParked) {
        answerEnd(call, {{id, {}},
                         entry->masterFile(),
                         entry->projectId,
                         std::unexpected(entry->failureReason.value_or(
                             ShelfItem{.status = ShelfItem::NeedsProject{}}.statusText())),
                         true});
    } else if (entry) {
        m_waiting.emplace(id, call);
    } else {
        return failure(call, "There is no such upload");
    }
    return std::nullopt;
}

void BusObject::answerEnd(const QDBusMessage &call, const UploadEnd &end) {
    m_bus.send(call.createReply({textOf(textOfPath(end.file)), textOf(end.projectId),
                                 textOf(end.assetId.value_or("")),
                                 textOf(end.assetId ? std::string() : end.assetId.error())}));
}

void BusObject::uploadEnded(const UploadEnd &end) {
    const auto [first, last] = m_waiting.equal_range(end.ids.entryId);
    for (auto waiting = first; waiting != last; ++waiting)
        answerEnd(waiting->second, end);
    m_waiting.erase(first, last);
    QDBusMessage signal = QDBusMessage::createSignal(QString::fromLatin1(applicationBus::path),
                                                     QString::fromLatin1(applicationBus::interface),
                                                     QStringLiteral("UploadEnded"));
    signal << textOf(end.ids.entryId) << textOf(textOfPath(end.file)) << textOf(end.projectId)
           << textOf(end.assetId.value_or("")) << textOf(end.assetId ? std::string() : end.assetId.error());
    m_bus.send(signal);
}

BusObject::Answer BusObject::progress(const QDBusMessage &call) {
    QList<double> values;
    const std::vector<ShelfItem> &items = m_delegate->uploads().shelf().items();
    for (const QString &id : call.arguments().value(0).toStringList()) {
        const auto card = std::ranges::find(items, std::optional(QUuid(id)), &ShelfItem::entryId);
        const auto *uploading =
            card == items.end() ? nullptr : std::get_if<ShelfItem::Uploading>(&card->status);
        values.append(uploading ? uploading->progress : 0);
    }
    return call.createReply(QVariant::fromValue(values));
}

BusObject::Answer BusObject::recover(const QDBusMessage &call) {
    m_delegate->handover().offerRecovered({});
    return call.createReply();
}

BusObject::Answer BusObject::unpair(const QDBusMessage &call) {
    m_delegate->account().unpair();
    return call.createReply();
}

} // namespace vantrell
