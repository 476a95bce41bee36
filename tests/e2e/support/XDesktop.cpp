// SPDX-License-Identifier: MIT
#include "XDesktop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QThread>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>
#include <xcb/xtest.h>

namespace velkor::e2e {

namespace {

template <typename T> using Reply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T> Reply<T> reply(T* raw)
{
    return Reply<T>(raw, &std::free);
}

} // namespace

int key::of(QChar c)
{
    // The us layout's rows, by keycode.
    static const char* rows[] = {"1234567890", "qwertyuiop", "asdfghjkl", "zxcvbnm"};
    static const int firsts[] = {10, 24, 38, 52};
    for (int r = 0; r < 4; ++r) {
        const char* at = std::strchr(rows[r], c.toLatin1());
        if (c.unicode() < 128 && c.unicode() && at)
            return firsts[r] + int(at - rows[r]);
    }
    return 0;
}

namespace {

// Every process of a test desktop dies with the test, even when the test
// itself crashes.
void dieWithParent(QProcess& process)
{
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

} // namespace

XDesktop::XDesktop()
{
    dieWithParent(m_server);
}

XDesktop::~XDesktop()
{
    for (auto it = m_clients.rbegin(); it != m_clients.rend(); ++it) {
        stopProcess(*it->second);
        delete it->second;
    }
    stopTrayHost();
    stopWindowManager();
    if (m_connection)
        xcb_disconnect(m_connection);
    stopProcess(m_server);
}

void XDesktop::stopProcess(QProcess& process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(2000)) {
        process.kill();
        process.waitForFinished(2000);
    }
}

QProcessEnvironment XDesktop::environment() const
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DISPLAY"), display());
    // An X11 session, whatever session the tests run from.
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    env.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("x11"));
    env.remove(QStringLiteral("XAUTHORITY"));
    env.insert(QStringLiteral("HOME"), m_scratch.path());
    return env;
}

bool XDesktop::start(bool withWindowManager)
{
    if (!m_scratch.isValid()) {
        m_error = QStringLiteral("no scratch folder");
        return false;
    }
    // -displayfd 1: the server picks a free display and prints its number.
    m_server.start(QStringLiteral("Xvfb"),
                   QStringList{QStringLiteral("-displayfd"), QStringLiteral("1"),
                               QStringLiteral("-screen"), QStringLiteral("0"),
                               QStringLiteral("1280x800x24"), QStringLiteral("-nolisten"),
                               QStringLiteral("tcp"), QStringLiteral("-noreset")} +
                       m_serverArguments);
    if (!m_server.waitForStarted(5000)) {
        m_error = QStringLiteral("Xvfb does not start: ") + m_server.errorString();
        return false;
    }
    QDeadlineTimer deadline(10000);
    QByteArray out;
    while (!out.contains('\n') && !deadline.hasExpired()) {
        m_server.waitForReadyRead(100);
        out += m_server.readAllStandardOutput();
        if (m_server.state() == QProcess::NotRunning)
            break;
    }
    bool ok = false;
    m_displayNumber = out.trimmed().toInt(&ok);
    if (!ok) {
        m_error = QStringLiteral("Xvfb gave no display: ") + QString::fromLocal8Bit(out) +
                  QString::fromLocal8Bit(m_server.readAllStandardError());
        return false;
    }
    m_connection = xcb_connect(display().toLatin1().constData(), nullptr);
    if (xcb_connection_has_error(m_connection)) {
        m_error = QStringLiteral("cannot connect to ") + display();
        return false;
    }
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    return !withWindowManager || startWindowManager();
}

void XDesktop::launchOpenbox(const QStringList& arguments)
{
    m_windowManager = std::make_unique<QProcess>();
    dieWithParent(*m_windowManager);
    m_windowManager->setProcessEnvironment(environment());
    m_windowManager->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_windowManager->start(QStringLiteral("openbox"), arguments);
}

bool XDesktop::startWindowManager()
{
    launchOpenbox({});
    const bool up = waitFor([&] { return windowManagerIsUp(); }, 10000);
    if (!up)
        m_error = QStringLiteral("openbox did not come up");
    return up;
}

bool XDesktop::startTrayHost()
{
    m_trayHost = std::make_unique<QProcess>();
    dieWithParent(*m_trayHost);
    m_trayHost->setProcessEnvironment(environment());
    m_trayHost->start(QStringLiteral("trayer"),
                      {"--edge", "top", "--align", "right", "--widthtype", "request", "--height",
                       "24", "--SetDockType", "true"});
    if (!m_trayHost->waitForStarted(5000)) {
        m_error = QStringLiteral("trayer is not installed");
        m_trayHost.reset();
        return false;
    }
    const bool up =
        waitFor([&] { return selectionOwner("_NET_SYSTEM_TRAY_S0") != XCB_NONE; }, 5000);
    if (!up) {
        m_error = QStringLiteral("trayer did not take the tray selection");
        return false;
    }
    // trayer owns the selection before its panel is up to take icons.
    settle(500);
    return true;
}

void XDesktop::stopTrayHost()
{
    if (m_trayHost)
        stopProcess(*m_trayHost);
    m_trayHost.reset();
}

bool XDesktop::windowManagerIsUp() const
{
    // A window manager is up once its check window exists and names itself
    // (a stale root property may name one that is gone).
    const auto check = cardinals(m_root, "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW);
    return !check.isEmpty() &&
           cardinals(check.first(), "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW) == check &&
           !cardinals(m_root, "_NET_NUMBER_OF_DESKTOPS", XCB_ATOM_CARDINAL).isEmpty();
}

void XDesktop::stopWindowManager()
{
    if (m_windowManager)
        stopProcess(*m_windowManager);
    m_windowManager.reset();
}

void XDesktop::killWindowManager()
{
    if (m_windowManager) {
        m_windowManager->kill();
        m_windowManager->waitForFinished(5000);
    }
    m_windowManager.reset();
}

bool XDesktop::replaceWindowManager()
{
    const auto before = cardinals(m_root, "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW);
    std::unique_ptr<QProcess> previous = std::move(m_windowManager);
    launchOpenbox({QStringLiteral("--replace")});
    const bool up = waitFor(
        [&] {
            return windowManagerIsUp() &&
                   cardinals(m_root, "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW) != before;
        },
        10000);
    // The one replaced leaves by itself.
    const bool left =
        !previous || previous->state() == QProcess::NotRunning || previous->waitForFinished(10000);
    if (!up || !left)
        m_error = QStringLiteral("openbox did not take over");
    return up && left;
}

void XDesktop::killServer()
{
    m_server.kill();
    m_server.waitForFinished(5000);
}

xcb_window_t XDesktop::launch(const QString& program, const QStringList& arguments,
                              const QString& wmClassName, int timeoutMs)
{
    QSet<xcb_window_t> known;
    for (xcb_window_t w : clients())
        known.insert(w);
    auto* process = new QProcess;
    dieWithParent(*process);
    process->setProcessEnvironment(environment());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(program, arguments);
    xcb_window_t found = 0;
    waitFor(
        [&] {
            for (xcb_window_t w : clients())
                if (!known.contains(w) && wmClass(w) == wmClassName)
                    found = w;
            return found != 0;
        },
        timeoutMs);
    m_clients.append({found, process});
    return found;
}

xcb_window_t XDesktop::launchTerminal(const QString& wmClassName, const QString& title)
{
    return launch(QStringLiteral("xterm"),
                  {QStringLiteral("-class"), wmClassName, QStringLiteral("-name"),
                   wmClassName.toLower(), QStringLiteral("-title"),
                   title.isEmpty() ? wmClassName : title},
                  wmClassName);
}

xcb_window_t XDesktop::launchRecorder(const QString& wmClass)
{
    // Raw mode hands every byte to cat at once, Tab and grave included.
    return launch(
        QStringLiteral("xterm"),
        {QStringLiteral("-class"), wmClass, QStringLiteral("-e"), QStringLiteral("sh"),
         QStringLiteral("-c"),
         QStringLiteral("stty raw -echo; exec cat > '%1/%2'").arg(m_scratch.path(), wmClass)},
        wmClass);
}

QString XDesktop::recorded(const QString& wmClass) const
{
    QFile file(m_scratch.path() + QLatin1Char('/') + wmClass);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

qint64 XDesktop::pidOf(xcb_window_t window) const
{
    // X ids come back for later clients: the newest running owner counts.
    for (auto it = m_clients.crbegin(); it != m_clients.crend(); ++it)
        if (it->first == window && it->second->state() != QProcess::NotRunning)
            return it->second->processId();
    const auto pid = cardinals(window, "_NET_WM_PID", XCB_ATOM_CARDINAL);
    return pid.isEmpty() ? 0 : qint64(pid.first());
}

void XDesktop::kill(xcb_window_t window)
{
    if (const qint64 pid = pidOf(window))
        ::kill(pid_t(pid), SIGKILL);
}

void XDesktop::sync() const
{
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

void XDesktop::fakeKey(uint8_t type, int keycode)
{
    xcb_test_fake_input(m_connection, type, uint8_t(keycode), XCB_CURRENT_TIME, m_root, 0, 0, 0);
    sync();
    settle(15);
}

void XDesktop::press(int keycode)
{
    fakeKey(XCB_KEY_PRESS, keycode);
}

void XDesktop::release(int keycode)
{
    fakeKey(XCB_KEY_RELEASE, keycode);
}

void XDesktop::tap(int keycode)
{
    press(keycode);
    release(keycode);
}

void XDesktop::type(const QString& text)
{
    for (QChar c : text)
        tap(key::of(c));
}

void XDesktop::holding(int holdKey, const std::function<void()>& inside)
{
    constexpr int ApartMs = 450;
    QElapsedTimer& since = m_sinceHold[holdKey];
    if (since.isValid() && since.elapsed() < ApartMs)
        settle(int(ApartMs - since.elapsed()));
    since.start();
    press(holdKey);
    inside();
    release(holdKey);
}

xcb_atom_t XDesktop::atom(const char* name) const
{
    auto r = reply(xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, 0, uint16_t(std::strlen(name)), name),
        nullptr));
    return r ? r->atom : xcb_atom_t(XCB_ATOM_NONE);
}

QByteArray XDesktop::property(xcb_window_t window, xcb_atom_t property, xcb_atom_t type) const
{
    if (!window)
        return {};
    auto cookie = xcb_get_property(m_connection, 0, window, property, type, 0, 4096);
    xcb_generic_error_t* error = nullptr;
    auto r = reply(xcb_get_property_reply(m_connection, cookie, &error));
    std::free(error);
    if (!r)
        return {};
    return QByteArray(static_cast<const char*>(xcb_get_property_value(r.get())),
                      xcb_get_property_value_length(r.get()));
}

xcb_window_t XDesktop::selectionOwner(const char* selection) const
{
    auto r = reply(xcb_get_selection_owner_reply(
        m_connection, xcb_get_selection_owner(m_connection, atom(selection)), nullptr));
    return r ? r->owner : xcb_window_t(XCB_NONE);
}

QList<xcb_window_t> XDesktop::allWindows(xcb_window_t below) const
{
    QList<xcb_window_t> out;
    auto tree = reply(xcb_query_tree_reply(
        m_connection, xcb_query_tree(m_connection, below ? below : m_root), nullptr));
    if (!tree)
        return out;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i)
        out << children[i] << allWindows(children[i]);
    return out;
}

xcb_window_t XDesktop::parentOf(xcb_window_t window) const
{
    auto tree =
        reply(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
    return tree ? tree->parent : xcb_window_t(XCB_NONE);
}

bool XDesktop::isViewable(xcb_window_t window) const
{
    auto a = reply(xcb_get_window_attributes_reply(
        m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
    return a && a->map_state == XCB_MAP_STATE_VIEWABLE;
}

QList<xcb_window_t> XDesktop::shownWindowsNamed(const QString& title) const
{
    QList<xcb_window_t> found;
    for (const xcb_window_t window : allWindows())
        if (QString::fromUtf8(property(window, XCB_ATOM_WM_NAME)) == title && isViewable(window))
            found.append(window);
    return found;
}

QList<quint32> XDesktop::cardinals(xcb_window_t window, const char* property, xcb_atom_t type) const
{
    if (!window)
        return {};
    const QByteArray raw = this->property(window, atom(property), type);
    QList<quint32> out(raw.size() / 4);
    std::memcpy(out.data(), raw.constData(), size_t(out.size()) * 4);
    return out;
}

QList<xcb_window_t> XDesktop::clients() const
{
    if (m_windowManager) // it may have left a stale list behind otherwise
        return cardinals(m_root, "_NET_CLIENT_LIST", XCB_ATOM_WINDOW);
    QList<xcb_window_t> windows = topLevelsFrontFirst();
    std::reverse(windows.begin(), windows.end());
    return windows;
}

QList<xcb_window_t> XDesktop::topLevelsFrontFirst() const
{
    QList<xcb_window_t> out;
    auto tree =
        reply(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, m_root), nullptr));
    if (!tree)
        return out;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = xcb_query_tree_children_length(tree.get()) - 1; i >= 0; --i) {
        auto a = reply(xcb_get_window_attributes_reply(
            m_connection, xcb_get_window_attributes(m_connection, children[i]), nullptr));
        if (a && a->map_state == XCB_MAP_STATE_VIEWABLE && !a->override_redirect)
            out.append(children[i]);
    }
    return out;
}

xcb_window_t XDesktop::inputFocus() const
{
    auto r =
        reply(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    return r ? r->focus : 0;
}

QList<xcb_window_t> XDesktop::stackingFrontFirst() const
{
    QList<xcb_window_t> list = cardinals(m_root, "_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW);
    std::reverse(list.begin(), list.end());
    return list;
}

xcb_window_t XDesktop::activeWindow() const
{
    const auto active = cardinals(m_root, "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW);
    return active.isEmpty() ? 0 : active.first();
}

QString XDesktop::wmClass(xcb_window_t window) const
{
    return QString::fromLatin1(
        property(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING).split('\0').value(1));
}

std::optional<quint32> XDesktop::currentDesktop() const
{
    const auto current = cardinals(m_root, "_NET_CURRENT_DESKTOP", XCB_ATOM_CARDINAL);
    return current.isEmpty() ? std::nullopt : std::optional<quint32>(current.first());
}

std::optional<quint32> XDesktop::desktopOf(xcb_window_t window) const
{
    const auto desktop = cardinals(window, "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL);
    return desktop.isEmpty() ? std::nullopt : std::optional<quint32>(desktop.first());
}

bool XDesktop::isHidden(xcb_window_t window) const
{
    return cardinals(window, "_NET_WM_STATE", XCB_ATOM_ATOM).contains(atom("_NET_WM_STATE_HIDDEN"));
}

bool XDesktop::exists(xcb_window_t window) const
{
    return clients().contains(window);
}

QPoint XDesktop::pointer() const
{
    auto r = reply(
        xcb_query_pointer_reply(m_connection, xcb_query_pointer(m_connection, m_root), nullptr));
    return r ? QPoint(r->root_x, r->root_y) : QPoint(-1, -1);
}

QRect XDesktop::frame(xcb_window_t window) const
{
    auto geometry = reply(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
    auto origin = reply(xcb_translate_coordinates_reply(
        m_connection, xcb_translate_coordinates(m_connection, window, m_root, 0, 0), nullptr));
    if (!geometry || !origin)
        return QRect();
    QList<quint32> e = cardinals(window, "_NET_FRAME_EXTENTS", XCB_ATOM_CARDINAL);
    if (e.size() != 4)
        e = {0, 0, 0, 0};
    return QRect(origin->dst_x - int(e[0]), origin->dst_y - int(e[2]),
                 geometry->width + int(e[0] + e[1]), geometry->height + int(e[2] + e[3]));
}

void XDesktop::sendRootMessage(xcb_window_t window, const char* type, QList<quint32> data)
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(type);
    for (int i = 0; i < data.size() && i < 5; ++i)
        event.data.data32[i] = data[i];
    xcb_send_event(m_connection, 0, m_root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    sync();
}

void XDesktop::activate(xcb_window_t window)
{
    sendRootMessage(window, "_NET_ACTIVE_WINDOW", {2, XCB_CURRENT_TIME, 0});
}

void XDesktop::switchDesktop(quint32 desktop)
{
    sendRootMessage(m_root, "_NET_CURRENT_DESKTOP", {desktop, XCB_CURRENT_TIME});
}

void XDesktop::moveToDesktop(xcb_window_t window, quint32 desktop)
{
    sendRootMessage(window, "_NET_WM_DESKTOP", {desktop, 2});
}

void XDesktop::warpPointer(QPoint where)
{
    xcb_warp_pointer(m_connection, XCB_NONE, m_root, 0, 0, 0, 0, int16_t(where.x()),
                     int16_t(where.y()));
    sync();
}

void XDesktop::underActivationKey(const QString& text)
{
    holding(key::SuperR, [&] { type(text); });
}

bool XDesktop::waitForActive(const QString& wmClass, int timeoutMs) const
{
    return waitFor([&] { return activeClass() == wmClass; }, timeoutMs);
}

bool XDesktop::waitForActive(xcb_window_t window, int timeoutMs) const
{
    return waitFor([&] { return activeWindow() == window; }, timeoutMs);
}

bool XDesktop::waitForDesktop(quint32 desktop) const
{
    return waitFor([&] { return currentDesktop() == desktop; });
}

bool XDesktop::waitForShown(const QString& title, int timeoutMs) const
{
    return waitFor([&] { return !shownWindowsNamed(title).isEmpty(); }, timeoutMs);
}

bool XDesktop::waitFor(const std::function<bool()>& condition, int timeoutMs) const
{
    QDeadlineTimer deadline(timeoutMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        settle(10);
    }
    return true;
}

void XDesktop::settle(int ms)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(2);
    }
}

QImage XDesktop::grab(const QRect& area) const
{
    auto cookie =
        xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, int16_t(area.x()),
                      int16_t(area.y()), uint16_t(area.width()), uint16_t(area.height()), ~0u);
    auto r = reply(xcb_get_image_reply(m_connection, cookie, nullptr));
    if (!r || r->depth != 24)
        return {};
    // Depth 24 comes as 32-bit pixels, 0xXXRRGGBB in the server's order.
    return QImage(xcb_get_image_data(r.get()), area.width(), area.height(), QImage::Format_RGB32)
        .copy();
}

QRgb XDesktop::pixel(QPoint where) const
{
    const QImage image = grab(QRect(where, QSize(1, 1)));
    return image.isNull() ? 0 : image.pixel(0, 0);
}

bool XDesktop::screenshot(const QString& path) const
{
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    const QImage image = grab(QRect(0, 0, screen->width_in_pixels, screen->height_in_pixels));
    return !image.isNull() && image.save(path, "PNG");
}

} // namespace velkor::e2e
