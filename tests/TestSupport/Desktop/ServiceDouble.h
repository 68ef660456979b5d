// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/Account/SessionBus.h"
#include "TestSupport/ChildProcess.h"

#include <QString>
#include <QVariant>

#include <memory>
#include <string>
#include <vector>

namespace vantrell::testing {

/// A service of the desktop on a test's own bus that notes what it is asked and answers as it is told
/// (python-dbusmock). It ends with the object. Main thread; its own calls block.
class ServiceDouble {
public:
    /// One that knows no methods yet.
    ServiceDouble(const SessionBus &bus, const std::string &name, const std::string &path,
                  const std::string &interface);
    /// One that comes with dbusmock; `parameters` in JSON.
    static std::unique_ptr<ServiceDouble> logind(const SessionBus &bus);
    static std::unique_ptr<ServiceDouble> notifications(const SessionBus &bus,
                                                        const std::string &capabilities);

    /// `code` is Python and sets `ret`.
    void addMethod(const std::string &member, const std::string &in, const std::string &out,
                   const std::string &code = {});
    void addMethod(const std::string &interface, const std::string &member, const std::string &in,
                   const std::string &out, const std::string &code);
    void emitSignal(const std::string &path, const std::string &interface, const std::string &member,
                    const std::string &signature, const QVariantList &arguments);
    /// Sets them and tells of the change.
    void setProperties(const std::string &path, const std::string &interface, const QVariantMap &values);
    /// The arguments of each call of the method so far.
    std::vector<QVariantList> calls(const std::string &member);
    /// Any call; the answer's arguments.
    QVariantList call(const std::string &path, const std::string &interface, const std::string &member,
                      const QVariantList &arguments = {});

private:
    ServiceDouble(const SessionBus &bus, std::string name, std::string path, std::string interface,
                  const std::vector<std::string> &command);

    const SessionBus &m_bus;
    std::string m_name, m_path, m_interface;
    std::unique_ptr<ChildProcess> m_process;
};

} // namespace vantrell::testing
