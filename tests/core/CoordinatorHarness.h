// SPDX-License-Identifier: MIT
#pragma once

#include "catalogue/AppRegistry.h"
#include "core/AppCoordinator.h"
#include "fakes/FakePlatform.h"
#include "overlay/OverlayPanel.h"
#include "settings/Preferences.h"

#include <QStringList>
#include <QTemporaryDir>
#include <memory>

namespace velkor::test {

// A panel that only remembers what was asked of it.
class FakePanel final : public OverlayPanel
{
public:
    bool isVisible() const override { return visible; }
    std::optional<QSizeF> fittingSize() override { return QSizeF(300, 80); }
    std::optional<QRectF> mainScreenArea() const override { return QRectF(0, 0, 1440, 900); }
    void setFrame(const QRectF&) override { ++frames; }
    void orderFront() override {}
    void fadeIn(double) override
    {
        visible = true;
        ++fadeIns;
    }
    void orderOut() override { visible = false; }

    bool visible = false;
    int fadeIns = 0;
    int frames = 0;
};

// The whole switching path on fakes: key events go in through the fake key
// source, requests come out in the fake platform's call log.
class CoordinatorHarness
{
public:
    CoordinatorHarness();
    ~CoordinatorHarness();

    // Builds registry and coordinator and installs the key source. Apps and
    // installed apps set up before this are seen at once.
    void boot();

    fake::FakePlatform fake;
    std::unique_ptr<Preferences> prefs;
    std::unique_ptr<AppRegistry> registry;
    std::unique_ptr<AppCoordinator> coordinator;
    FakePanel* panel = nullptr; // once the controller has made it

    // A running app with one titled window "<pid>w0".
    void addApp(Pid pid, const QString& name, const QString& bundleId);
    void addWindows(Pid pid, const QStringList& titles, const QList<bool>& minimized = {});
    // An installed app at "/apps/<name>", read by the next boot().
    void addInstalled(const QString& name, const std::optional<QString>& bundleId);

    // Key events on the clock's time line, with the flag word of the
    // modifiers currently down.
    KeyDecision pressActivation();
    KeyDecision releaseActivation();
    KeyDecision doubleTap(); // press, release, press again 0.1 s later
    KeyDecision key(qint64 code, const QString& characters);
    KeyDecision type(QChar c);      // a letter or digit by its US key
    void type(const QString& text); // each character in turn
    KeyDecision rightOption(bool down);
    KeyDecision leftCommand(bool down);
    KeyDecision commandTab();
    KeyDecision commandGrave();
    void advance(double seconds) { fake.clock->advance(seconds); }

    OverlayModel& model() { return coordinator->overlay().model(); }
    QStringList titles();
    // Activations and launches, in order ("activate:12", "open:/apps/X").
    QStringList activations() const;
    // Log lines starting with prefix, in order.
    QStringList logged(const QString& prefix) const;
    void clearLog() { fake.log.clear(); }
    QStringList usage(const QString& letter) const { return prefs->letterUsage().value(letter); }

    quint64 flags = 0;

private:
    QTemporaryDir m_dir;
};

// The macOS key code of a letter or digit on a US keyboard.
qint64 usKeyCode(QChar c);

} // namespace velkor::test
