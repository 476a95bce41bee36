// SPDX-License-Identifier: MIT
#pragma once

#include "catalogue/AppRegistry.h"
#include "core/AppCoordinator.h"
#include "fakes/FakePlatform.h"
#include "overlay/OverlayPanel.h"
#include "platform/KeyCodes.h"
#include "settings/Preferences.h"

#include <QStringList>
#include <QTemporaryDir>
#include <memory>

namespace velkor::test {

// A panel that only remembers whether it is shown and how often it faded in.
class FakePanel final : public OverlayPanel
{
public:
    bool isVisible() const override { return visible; }
    std::optional<QSizeF> fittingSize() override { return QSizeF(300, 80); }
    std::optional<QRectF> mainScreenArea() const override { return QRectF(0, 0, 1440, 900); }
    void setFrame(const QRectF&) override {}
    void orderFront() override {}
    void fadeIn(double) override { visible = true, ++fadeIns; }
    void orderOut() override { visible = false; }

    bool visible = false;
    int fadeIns = 0;
};

// The whole switching path on fakes: key events go in through the fake key
// source, requests come out in the fake platform's call log.
class CoordinatorHarness
{
public:
    CoordinatorHarness();
    ~CoordinatorHarness();

    // Builds registry and coordinator and installs the key source; apps set
    // up before are seen at once.
    void boot();

    fake::FakePlatform fake;
    std::unique_ptr<Preferences> prefs;
    std::unique_ptr<AppRegistry> registry;
    std::unique_ptr<AppCoordinator> coordinator;
    FakePanel* panel = nullptr; // once the controller has made it
    quint64 flags = 0;          // the modifiers currently down

    // A running app with one window "<pid>w0" titled "<name> window".
    void addApp(Pid pid, const QString& name, const QString& bundleId);
    void addWindows(Pid pid, const QStringList& titles, const QList<bool>& minimized = {});
    // An installed app at "/apps/<name>", read by the next boot().
    void addInstalled(const QString& name, const std::optional<QString>& bundleId);

    KeyDecision pressActivation() { return activation(true); }
    KeyDecision releaseActivation() { return activation(false); }
    KeyDecision doubleTap(); // press, release, press again 0.1 s later
    KeyDecision key(qint64 code, const QString& characters); // down and up
    KeyDecision type(QChar c) { return key(10, QString(c)); }
    void type(const QString& text);
    KeyDecision rightOption(bool down)
    {
        return modifier(keys::RightOption, keys::RightOptionBit, down);
    }
    KeyDecision leftCommand(bool down)
    {
        return modifier(keys::LeftCommand, keys::LeftCommandBit, down);
    }
    KeyDecision leftShift(bool down) { return modifier(keys::LeftShift, keys::LeftShiftBit, down); }
    KeyDecision commandTab() { return key(keys::Tab, QStringLiteral("\t")); }
    KeyDecision commandGrave() { return key(keys::Grave, QStringLiteral("`")); }
    void advance(double seconds) { fake.clock->advance(seconds); }

    OverlayModel& model() { return coordinator->overlay().model(); }
    QStringList titles();
    QStringList activations() const; // "activate:12", "open:/apps/X", in order
    QStringList logged(const QString& prefix) const;
    void clearLog() { fake.log.clear(); }
    QStringList usage(const QString& letter) const { return prefs->letterUsage().value(letter); }

private:
    KeyDecision activation(bool down);
    KeyDecision modifier(qint64 code, quint64 bits, bool down);

    QTemporaryDir m_dir;
};

} // namespace velkor::test
