// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <xcb/xcb.h>

namespace velkor {

// One passive key grab on the root window, made in every Caps Lock / Num
// Lock variant so that those locks never hide a key from us.
struct X11KeyGrab
{
    xcb_keycode_t keycode = 0;
    uint16_t modifiers = 0;
    QString name; // for logs, e.g. "Super+Tab (keycode 23)"; changes with the layout
    // The activation key on its own: nothing works without it, so a refusal
    // is tried again at every watchdog tick; the other grabs back off.
    bool essential = false;

    // The same grab whatever the layout calls the key.
    friend bool operator==(const X11KeyGrab& a, const X11KeyGrab& b)
    {
        return a.keycode == b.keycode && a.modifiers == b.modifiers;
    }
};

// The passive grabs the key source holds, kept equal to the grabs it wants.
// Each request is checked on its own, so that a refusal (another client
// holds the key) is an answer, not a crash; a refused grab is tried again
// later, without a round trip on every watchdog tick.
class X11KeyGrabs final
{
public:
    // Pauses between tries of a refused grab that is not essential: doubled
    // after each refusal, up to the longest.
    static constexpr double FirstRetrySeconds = 3;
    static constexpr double LongestRetrySeconds = 60;

    X11KeyGrabs(xcb_connection_t* connection, xcb_window_t root);

    // The Lock/NumLock variants of modifiers (without duplicates when Num
    // Lock has no modifier bit).
    static QList<uint16_t> lockVariants(uint16_t modifiers, uint16_t numLockMask);

    // Makes the held grabs the wanted ones: lifts those no longer wanted and
    // places the new ones at once. Grabs wanted before keep their state; a
    // new Num Lock bit renews them all.
    void apply(const QList<X11KeyGrab>& wanted, uint16_t numLockMask, double now);
    // Tries again the refused grabs that are due.
    void retryDue(double now);
    // Lifts every grab (they are wanted again at the next apply()).
    void liftAll();

    bool isHeld(const X11KeyGrab& grab) const { return m_held.contains(grab); }

    // While a key is typed again into the focused window, our own grabs of
    // it must not catch it on its way: lifted here, put back by restore().
    QList<X11KeyGrab> liftKey(xcb_keycode_t keycode);
    void restore(const QList<X11KeyGrab>& grabs, double now);

private:
    // What turns the held grabs into the wanted ones: the grabs to lift and
    // the grabs to place. Grabs in both lists are left alone.
    struct Change
    {
        QList<X11KeyGrab> lift;
        QList<X11KeyGrab> place;
    };
    static Change changeBetween(const QList<X11KeyGrab>& held, const QList<X11KeyGrab>& wanted);

    struct Refusal
    {
        int count = 0;
        double retryAt = 0;
        bool reported = false;
    };
    static quint32 idOf(const X11KeyGrab& grab)
    {
        return quint32(grab.keycode) << 16 | grab.modifiers;
    }

    void tryPlace(const X11KeyGrab& grab, double now);
    bool place(const X11KeyGrab& grab);
    void remove(const X11KeyGrab& grab);

    xcb_connection_t* m_connection;
    xcb_window_t m_root;
    uint16_t m_numLockMask = 0;
    QList<X11KeyGrab> m_wanted;
    QList<X11KeyGrab> m_held;
    QHash<quint32, Refusal> m_refused;
};

} // namespace velkor
