// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QImage>
#include <QList>
#include <QPoint>
#include <QProcess>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

namespace velkor::e2e {

// X keycodes of Xvfb's default us keymap (evdev + 8).
namespace key {
inline constexpr int SuperL = 133;
inline constexpr int SuperR = 134;
inline constexpr int AltR = 108;
inline constexpr int ControlR = 105;
inline constexpr int ShiftL = 50;
inline constexpr int Tab = 23;
inline constexpr int Return = 36;
inline constexpr int Escape = 9;
inline constexpr int Grave = 49;
inline constexpr int LeftBracket = 34;
inline constexpr int RightBracket = 35;
// The key of a lower-case ASCII letter or a digit; 0 for anything else.
int of(QChar c);
} // namespace key

// A private X desktop for one test: its own Xvfb (display picked by the
// server through -displayfd), openbox, and X clients, all stopped when the
// object goes. Keys go in through XTEST by keycode; every result is read
// back from the server.
class XDesktop final
{
public:
    XDesktop();
    ~XDesktop();
    XDesktop(const XDesktop&) = delete;
    XDesktop& operator=(const XDesktop&) = delete;

    // Starts Xvfb and, unless withoutWindowManager, openbox; false with a
    // reason in error() when either does not come up.
    bool start(bool withWindowManager = true);
    // Extra Xvfb arguments for the next start, e.g. "-extension", "XTEST".
    void setServerArguments(const QStringList& arguments) { m_serverArguments = arguments; }
    const QString& error() const { return m_error; }
    QString display() const { return QStringLiteral(":%1").arg(m_displayNumber); }
    // The environment clients of this desktop run with.
    QProcessEnvironment environment() const;
    // A scratch folder that lives as long as the desktop.
    QString scratchPath() const { return m_scratch.path(); }

    // The window manager: started by start(); stop and start it again.
    bool startWindowManager();
    void stopWindowManager();
    // Kills it (SIGKILL): everything it wrote on the root stays behind.
    void killWindowManager();
    // Starts another one that takes over from the running one.
    bool replaceWindowManager();
    // A system tray host (trayer, top right) that takes icons once this
    // returns; false with a reason in error() when it cannot start.
    bool startTrayHost();
    void stopTrayHost();
    // Kills the X server itself (SIGKILL).
    void killServer();

    // Starts an X client and waits for its managed window of this WM_CLASS
    // class; 0 when none appears in time.
    xcb_window_t launch(const QString& program, const QStringList& arguments,
                        const QString& wmClass, int timeoutMs = 8000);
    // An xterm with its own class, instance name and title.
    xcb_window_t launchTerminal(const QString& wmClass, const QString& title = QString());
    // An xterm that writes every byte it is given, at once, to a file that
    // recorded(wmClass) reads back.
    xcb_window_t launchRecorder(const QString& wmClass);
    QString recorded(const QString& wmClass) const;
    // Kills the client that owns window, at once (SIGKILL).
    void kill(xcb_window_t window);
    // The pid the client process of window was started with, or 0.
    qint64 pidOf(xcb_window_t window) const;

    // Keys, by X keycode, each followed by a round trip so the server has
    // seen it before the call returns.
    void press(int keycode);
    void release(int keycode);
    void tap(int keycode);
    // Taps the letters or digits of text.
    void type(const QString& text);
    // Holds holdKey, runs inside, releases it. Two holds of the same key
    // are kept apart by more than a double tap's 0.35 s.
    void holding(int holdKey, const std::function<void()>& inside);

    // What the server says now. The clients are the window manager's list,
    // or without one the mapped top-level windows, bottom first.
    QList<xcb_window_t> clients() const;
    QList<xcb_window_t> stackingFrontFirst() const;
    xcb_window_t activeWindow() const;
    xcb_window_t inputFocus() const;
    // The mapped top-level windows other than menus and popups, front first.
    QList<xcb_window_t> topLevelsFrontFirst() const;
    QString wmClass(xcb_window_t window) const;
    QString activeClass() const { return wmClass(activeWindow()); }
    std::optional<quint32> currentDesktop() const;
    std::optional<quint32> desktopOf(xcb_window_t window) const;
    bool isHidden(xcb_window_t window) const;
    bool exists(xcb_window_t window) const;
    QPoint pointer() const;
    QRect frame(xcb_window_t window) const;

    // Requests as a pager would send them, to set the scene.
    void activate(xcb_window_t window);
    void switchDesktop(quint32 desktop);
    void moveToDesktop(xcb_window_t window, quint32 desktop);
    void warpPointer(QPoint where);

    // Holds the activation key (Right Super) and types text under it.
    void underActivationKey(const QString& text);
    // Waits until a window of this WM_CLASS class, or this very window, is
    // the active one.
    bool waitForActive(const QString& wmClass, int timeoutMs = 3000) const;
    bool waitForActive(xcb_window_t window, int timeoutMs = 3000) const;
    // Waits until this desktop is the current one.
    bool waitForDesktop(quint32 desktop) const;
    // Polls until condition holds; false after timeoutMs.
    bool waitFor(const std::function<bool()>& condition, int timeoutMs = 3000) const;
    // Lets the event loops of every client run for a while.
    static void settle(int ms);

    // What the screen shows: an area, one pixel, the whole of it as a PNG file.
    QImage grab(const QRect& area) const;
    QRgb pixel(QPoint where) const;
    bool screenshot(const QString& path) const;

    // Raw reads, for what the calls above do not cover.
    xcb_connection_t* connection() const { return m_connection; }
    xcb_window_t root() const { return m_root; }
    xcb_atom_t atom(const char* name) const;
    // A property's bytes as any client wrote them; empty when unset.
    QByteArray property(xcb_window_t window, xcb_atom_t property,
                        xcb_atom_t type = XCB_GET_PROPERTY_TYPE_ANY) const;
    xcb_window_t selectionOwner(const char* selection) const;
    // Every window below the root, depth first: frames and unmanaged
    // (override-redirect) windows alike.
    QList<xcb_window_t> allWindows(xcb_window_t below = 0) const;
    xcb_window_t parentOf(xcb_window_t window) const;
    bool isViewable(xcb_window_t window) const;
    // The shown windows, managed or not, whose WM_NAME is title.
    QList<xcb_window_t> shownWindowsNamed(const QString& title) const;
    // Waits until a window with this title shows.
    bool waitForShown(const QString& title, int timeoutMs = 5000) const;

private:
    void launchOpenbox(const QStringList& arguments);
    bool windowManagerIsUp() const;
    void fakeKey(uint8_t type, int keycode);
    QList<quint32> cardinals(xcb_window_t window, const char* property, xcb_atom_t type) const;
    void sendRootMessage(xcb_window_t window, const char* type, QList<quint32> data);
    void sync() const;
    void stopProcess(QProcess& process);

    QTemporaryDir m_scratch;
    QString m_error;
    int m_displayNumber = -1;
    QStringList m_serverArguments;
    QProcess m_server;
    std::unique_ptr<QProcess> m_windowManager;
    std::unique_ptr<QProcess> m_trayHost;
    QList<std::pair<xcb_window_t, QProcess*>> m_clients;
    xcb_connection_t* m_connection = nullptr;
    xcb_window_t m_root = 0;
    QHash<int, QElapsedTimer> m_sinceHold; // by hold key
};

} // namespace velkor::e2e
