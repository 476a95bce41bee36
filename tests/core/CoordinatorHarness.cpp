// SPDX-License-Identifier: MIT
#include "CoordinatorHarness.h"

#include "platform/KeyCodes.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QHash>

namespace velkor::test {

qint64 usKeyCode(QChar c)
{
    static const QHash<QChar, qint64> codes = {
        {'a', 0},  {'s', 1},  {'d', 2},  {'f', 3},  {'h', 4},  {'g', 5},  {'z', 6},  {'x', 7},
        {'c', 8},  {'v', 9},  {'b', 11}, {'q', 12}, {'w', 13}, {'e', 14}, {'r', 15}, {'y', 16},
        {'t', 17}, {'1', 18}, {'2', 19}, {'3', 20}, {'4', 21}, {'6', 22}, {'5', 23}, {'9', 25},
        {'7', 26}, {'8', 28}, {'0', 29}, {'o', 31}, {'u', 32}, {'i', 34}, {'p', 35}, {'l', 37},
        {'j', 38}, {'k', 40}, {'n', 45}, {'m', 46},
    };
    return codes.value(c.toLower(), 10);
}

CoordinatorHarness::CoordinatorHarness()
{
    prefs = std::make_unique<Preferences>(std::make_unique<QSettings>(
        m_dir.filePath(QStringLiteral("prefs.ini")), QSettings::IniFormat));
}

CoordinatorHarness::~CoordinatorHarness()
{
    coordinator.reset();
    registry.reset();
}

void CoordinatorHarness::boot()
{
    coordinator.reset();
    registry = std::make_unique<AppRegistry>(*fake.workspace, fake.installedApps, *prefs);
    // The installed-app scan hands its result back through the event loop.
    const qsizetype expected = fake.installedApps->apps.size();
    const QDeadlineTimer deadline(5000);
    while (registry->installedApps().size() < expected && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    coordinator =
        std::make_unique<AppCoordinator>(fake.platform(), *prefs, *registry, [this](OverlayModel&) {
            auto made = std::make_unique<FakePanel>();
            panel = made.get();
            return made;
        });
    coordinator->keyMonitor().start();
}

void CoordinatorHarness::addApp(Pid pid, const QString& name, const QString& bundleId)
{
    fake.workspace->addApp(pid, name, bundleId, QStringLiteral("/apps/%1").arg(name));
    addWindows(pid, {name + QStringLiteral(" window")});
}

void CoordinatorHarness::addWindows(Pid pid, const QStringList& titles,
                                    const QList<bool>& minimized)
{
    QList<fake::FakeWindow> list;
    for (int i = 0; i < titles.size(); ++i) {
        fake::FakeWindow w;
        w.key = QStringLiteral("%1w%2").arg(pid).arg(i);
        w.title = titles[i];
        w.minimized = i < minimized.size() && minimized[i];
        w.frame = QRectF(100 * pid, 0, 200, 100);
        list.append(w);
    }
    fake.windows->windows.insert(pid, list);
}

void CoordinatorHarness::addInstalled(const QString& name, const std::optional<QString>& bundleId)
{
    fake.installedApps->apps.append(
        InstalledApp{QStringLiteral("/apps/%1").arg(name), name, bundleId});
}

namespace {
// The device-independent mask that goes with the activation key.
quint64 pairMask(ModifierKey key)
{
    switch (key) {
    case ModifierKey::rightCommand:
    case ModifierKey::leftCommand:
        return keys::CommandMask;
    case ModifierKey::rightOption:
    case ModifierKey::leftOption:
        return keys::OptionMask;
    case ModifierKey::rightControl:
    case ModifierKey::leftControl:
        return keys::ControlMask;
    }
    return 0;
}
} // namespace

KeyDecision CoordinatorHarness::pressActivation()
{
    flags |= KeyMonitor::activationFlagBit(prefs->modifierKey()) | pairMask(prefs->modifierKey());
    return fake.keys->send(KeyEvent{KeyEventType::FlagsChanged,
                                    KeyMonitor::activationKeyCode(prefs->modifierKey()), flags,
                                    QString(), fake.clock->now()});
}

KeyDecision CoordinatorHarness::releaseActivation()
{
    flags &=
        ~(KeyMonitor::activationFlagBit(prefs->modifierKey()) | pairMask(prefs->modifierKey()));
    if (flags & keys::LeftCommandBit)
        flags |= keys::CommandMask;
    return fake.keys->send(KeyEvent{KeyEventType::FlagsChanged,
                                    KeyMonitor::activationKeyCode(prefs->modifierKey()), flags,
                                    QString(), fake.clock->now()});
}

KeyDecision CoordinatorHarness::doubleTap()
{
    pressActivation();
    advance(0.05);
    releaseActivation();
    advance(0.05);
    return pressActivation();
}

KeyDecision CoordinatorHarness::key(qint64 code, const QString& characters)
{
    const KeyDecision decision = fake.keys->send(
        KeyEvent{KeyEventType::KeyDown, code, flags, characters, fake.clock->now()});
    fake.keys->send(KeyEvent{KeyEventType::KeyUp, code, flags, characters, fake.clock->now()});
    return decision;
}

KeyDecision CoordinatorHarness::type(QChar c)
{
    return key(usKeyCode(c), QString(c));
}

void CoordinatorHarness::type(const QString& text)
{
    for (QChar c : text)
        type(c);
}

KeyDecision CoordinatorHarness::rightOption(bool down)
{
    flags = down ? flags | keys::RightOptionBit | keys::OptionMask
                 : flags & ~(keys::RightOptionBit | keys::OptionMask);
    return fake.keys->send(KeyEvent{KeyEventType::FlagsChanged, keys::RightOption, flags, QString(),
                                    fake.clock->now()});
}

KeyDecision CoordinatorHarness::leftCommand(bool down)
{
    flags = down ? flags | keys::LeftCommandBit | keys::CommandMask : flags & ~keys::LeftCommandBit;
    if (!(flags & (keys::LeftCommandBit | keys::RightCommandBit)))
        flags &= ~keys::CommandMask;
    return fake.keys->send(KeyEvent{KeyEventType::FlagsChanged, keys::LeftCommand, flags, QString(),
                                    fake.clock->now()});
}

KeyDecision CoordinatorHarness::commandTab()
{
    return key(keys::Tab, QStringLiteral("\t"));
}

KeyDecision CoordinatorHarness::commandGrave()
{
    return key(keys::Grave, QStringLiteral("`"));
}

QStringList CoordinatorHarness::titles()
{
    QStringList result;
    for (const OverlayItem& item : model().items())
        result << item.title;
    return result;
}

QStringList CoordinatorHarness::activations() const
{
    QStringList result;
    for (const QString& line : fake.log) {
        if (line.startsWith(QLatin1String("activate:")) || line.startsWith(QLatin1String("open:")))
            result << line;
    }
    return result;
}

QStringList CoordinatorHarness::logged(const QString& prefix) const
{
    QStringList result;
    for (const QString& line : fake.log) {
        if (line.startsWith(prefix))
            result << line;
    }
    return result;
}

} // namespace velkor::test
