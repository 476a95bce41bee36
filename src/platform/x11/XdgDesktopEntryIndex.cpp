// SPDX-License-Identifier: MIT
#include "platform/x11/XdgDesktopEntryIndex.h"

#include "platform/x11/XdgApplicationCheck.h"
#include "platform/x11/XdgDesktopFiles.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcDesktopEntries, "velkor.x11.desktopentries", QtInfoMsg)

namespace velkor::x11 {

namespace {

// Window identities are other programs' to make up; past this many, the
// remembered answers start over rather than grow.
constexpr qsizetype MaxAnswers = 4096;

std::optional<DesktopEntry> byId(const QString& id)
{
    const std::optional<QByteArray> path = XdgDesktopFiles::find(id);
    if (!path)
        return std::nullopt;
    const std::optional<QByteArray> contents = XdgDesktopFiles::read(*path);
    if (!contents)
        return std::nullopt;
    XdgApplicationCheck check;
    return applicationEntry(parseDesktopFile(*contents).get(), id, *path, check);
}

} // namespace

void XdgDesktopEntryIndex::setWindowClasses(QHash<QString, DesktopEntry> classes)
{
    qCDebug(lcDesktopEntries) << "desktop entries read again;" << classes.size()
                              << "name window classes";
    m_windowClasses = std::move(classes);
    m_answers.clear();
    emit changed();
}

std::optional<DesktopEntry>
XdgDesktopEntryIndex::match(const std::optional<QString>& gtkApplicationId,
                            const QString& className, const QString& instanceName)
{
    const QString key =
        gtkApplicationId.value_or(QString()) + QChar(0) + className + QChar(0) + instanceName;
    auto known = m_answers.constFind(key);
    if (known != m_answers.cend())
        return *known;

    const auto byWindowClass = [this](const QString& wmClass) -> std::optional<DesktopEntry> {
        auto it = m_windowClasses.constFind(wmClass);
        return it == m_windowClasses.cend() ? std::nullopt : std::optional<DesktopEntry>(*it);
    };
    std::optional<DesktopEntry> found;
    if (gtkApplicationId)
        found = byId(*gtkApplicationId);
    if (!found && !className.isEmpty())
        found = byWindowClass(className);
    if (!found && !instanceName.isEmpty())
        found = byWindowClass(instanceName);
    for (const QString& candidate :
         {className, className.toLower(), instanceName, instanceName.toLower()}) {
        if (found)
            break;
        found = byId(candidate);
    }
    if (m_answers.size() >= MaxAnswers)
        m_answers.clear();
    m_answers.insert(key, found);
    return found;
}

} // namespace velkor::x11
