// SPDX-License-Identifier: MIT
#include "platform/x11/X11KeyTranslator.h"

#include "platform/KeyCodes.h"
#include "platform/x11/X11KeyGrabs.h"
#include "platform/x11/X11ModifierState.h"

#include <QHash>
#include <QTest>
#include <memory>
#include <xkbcommon/xkbcommon.h>

using namespace velkor;

namespace {

struct KeymapDeleter
{
    void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
};
using Keymap = std::unique_ptr<xkb_keymap, KeymapDeleter>;

// A keymap compiled from the system's XKB data, as an evdev X server builds it.
Keymap compile(const char* layout)
{
    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    const xkb_rule_names names{"evdev", "pc105", layout, "", ""};
    Keymap keymap(xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
    xkb_context_unref(context);
    return keymap;
}

// The first keycode whose first level in group 0 is keysym.
quint32 keycodeOf(xkb_keymap* keymap, xkb_keysym_t keysym)
{
    for (quint32 kc = xkb_keymap_min_keycode(keymap); kc <= xkb_keymap_max_keycode(keymap); ++kc) {
        const xkb_keysym_t* syms = nullptr;
        if (xkb_keymap_key_get_syms_by_level(keymap, kc, 0, 0, &syms) > 0 && syms[0] == keysym)
            return kc;
    }
    return 0;
}

// Where Apple's ANSI keyboard has each letter and digit (HIToolbox kVK_ANSI_*).
const QHash<QChar, qint64> AnsiKeyCodes{
    {'a', 0},  {'s', 1},  {'d', 2},  {'f', 3},  {'h', 4},  {'g', 5},  {'z', 6},  {'x', 7},
    {'c', 8},  {'v', 9},  {'b', 11}, {'q', 12}, {'w', 13}, {'e', 14}, {'r', 15}, {'y', 16},
    {'t', 17}, {'1', 18}, {'2', 19}, {'3', 20}, {'4', 21}, {'6', 22}, {'5', 23}, {'9', 25},
    {'7', 26}, {'8', 28}, {'0', 29}, {'o', 31}, {'u', 32}, {'i', 34}, {'p', 35}, {'l', 37},
    {'j', 38}, {'k', 40}, {'n', 45}, {'m', 46}};

} // namespace

class X11KeyTranslatorTest : public QObject
{
    Q_OBJECT

private slots:
    void usKeysLandOnTheMacKeyAtTheSamePlace()
    {
        const Keymap us = compile("us");
        QVERIFY(us);
        for (const auto& [character, keyCode] : AnsiKeyCodes.asKeyValueRange()) {
            const quint32 kc = keycodeOf(us.get(), xkb_utf32_to_keysym(character.unicode()));
            QVERIFY2(kc, qPrintable(QString(character)));
            QCOMPARE(X11KeyTranslator::keyCodeForXKeycode(kc), keyCode);
        }

        const struct
        {
            xkb_keysym_t keysym;
            qint64 keyCode;
        } named[] = {
            {XKB_KEY_Super_R, keys::RightCommand},
            {XKB_KEY_Super_L, keys::LeftCommand},
            {XKB_KEY_Alt_R, keys::RightOption},
            {XKB_KEY_Alt_L, keys::LeftOption},
            {XKB_KEY_Control_R, keys::RightControl},
            {XKB_KEY_Control_L, keys::LeftControl},
            {XKB_KEY_Shift_R, keys::RightShift},
            {XKB_KEY_Shift_L, keys::LeftShift},
            {XKB_KEY_Tab, keys::Tab},
            {XKB_KEY_grave, keys::Grave},
            {XKB_KEY_Escape, keys::Escape},
            {XKB_KEY_Return, keys::Return},
            {XKB_KEY_bracketleft, keys::LeftBracket},
            {XKB_KEY_bracketright, keys::RightBracket},
        };
        for (const auto& [keysym, keyCode] : named) {
            const quint32 kc = keycodeOf(us.get(), keysym);
            QVERIFY(kc);
            QCOMPARE(X11KeyTranslator::keyCodeForXKeycode(kc), keyCode);
        }
    }

    void otherLayoutsKeepThePositionNotTheLetter()
    {
        const Keymap de = compile("de");
        const Keymap fr = compile("fr");
        QVERIFY(de && fr);
        // German swaps Y and Z; French puts A where Q is and Q where A is.
        QCOMPARE(X11KeyTranslator::keyCodeForXKeycode(keycodeOf(de.get(), XKB_KEY_z)), 16);
        QCOMPARE(X11KeyTranslator::keyCodeForXKeycode(keycodeOf(de.get(), XKB_KEY_y)), 6);
        QCOMPARE(X11KeyTranslator::keyCodeForXKeycode(keycodeOf(fr.get(), XKB_KEY_a)), 12);
        QCOMPARE(X11KeyTranslator::keyCodeForXKeycode(keycodeOf(fr.get(), XKB_KEY_q)), 0);
        // German AltGr sits where Right Alt is, and counts as it.
        const quint32 rightAlt = *X11KeyTranslator::xKeycodeForKeyCode(keys::RightOption);
        const xkb_keysym_t* syms = nullptr;
        QCOMPARE(xkb_keymap_key_get_syms_by_level(de.get(), rightAlt, 0, 0, &syms), 1);
        QCOMPARE(syms[0], xkb_keysym_t(XKB_KEY_ISO_Level3_Shift));
    }

    void everyTranslatedKeyLeadsBackToItsKeycode()
    {
        int mapped = 0;
        for (quint32 kc = 0; kc < 256; ++kc) {
            const auto keyCode = X11KeyTranslator::keyCodeForXKeycode(kc);
            if (!keyCode)
                continue;
            ++mapped;
            QVERIFY(*keyCode >= 0 && *keyCode < 128);
            QCOMPARE(X11KeyTranslator::xKeycodeForKeyCode(*keyCode), kc);
        }
        QVERIFY(mapped > 100);
        QVERIFY(!X11KeyTranslator::keyCodeForXKeycode(0));
        QVERIFY(!X11KeyTranslator::xKeycodeForKeyCode(X11KeyTranslator::UnmappedKeyCode));
    }

    void charactersIgnoreModifiersAndFollowTheGroup()
    {
        const Keymap us = compile("us");
        const Keymap usRu = compile("us,ru");
        const Keymap de = compile("de");
        QVERIFY(us && usRu && de);
        const quint32 s = keycodeOf(us.get(), XKB_KEY_s);
        QCOMPARE(X11KeyTranslator::characters(us.get(), s, 0), QStringLiteral("s"));
        QCOMPARE(X11KeyTranslator::characters(us.get(), keycodeOf(us.get(), XKB_KEY_1), 0),
                 QStringLiteral("1"));
        // Keys that type no text give none, so they never read as letters.
        for (const xkb_keysym_t keysym : {XKB_KEY_Tab, XKB_KEY_Return, XKB_KEY_Escape,
                                          XKB_KEY_BackSpace, XKB_KEY_Super_R, XKB_KEY_F1}) {
            QCOMPARE(X11KeyTranslator::characters(us.get(), keycodeOf(us.get(), keysym), 0),
                     QString());
        }
        // The second group types Cyrillic on the same key; a group the key
        // lacks wraps round to the first.
        QCOMPARE(X11KeyTranslator::characters(usRu.get(), s, 1), QStringLiteral("ы"));
        QCOMPARE(X11KeyTranslator::characters(usRu.get(), s, 2), QStringLiteral("s"));
        // A dead key types nothing by itself.
        const quint32 grave = *X11KeyTranslator::xKeycodeForKeyCode(keys::Grave);
        QCOMPARE(X11KeyTranslator::characters(de.get(), grave, 0), QString());
        QCOMPARE(X11KeyTranslator::characters(nullptr, s, 0), QString());
    }

    void flagWordKeepsSidesApart()
    {
        using namespace keys;
        X11ModifierState state;
        QVERIFY(state.press(RightCommand));
        QVERIFY(!state.press(RightCommand));
        QVERIFY(state.press(LeftCommand));
        QVERIFY(state.release(RightCommand));
        // The mask stays while the other side is still down.
        QCOMPARE(state.flags(), LeftCommandBit | CommandMask);
        QVERIFY(state.release(LeftCommand));
        QVERIFY(!state.release(LeftCommand));
        QCOMPARE(state.flags(), 0u);

        for (const qint64 key : {RightOption, LeftOption, LeftControl, RightControl, RightShift})
            QVERIFY(state.press(key));
        QVERIFY(state.release(RightOption));
        QVERIFY(state.release(LeftControl));
        QVERIFY(!state.isDown(RightOption));
        QCOMPARE(state.flags(), LeftOptionBit | OptionMask | RightControlBit | ControlMask |
                                    RightShiftBit | ShiftMask);
        // Ordinary keys never touch the word.
        QVERIFY(!state.press(Tab));
    }

    void grabsCoverEveryLockCombination()
    {
        const uint16_t numLock = 0x10; // Mod2, as most keymaps have it
        const QList<uint16_t> variants = X11KeyGrabs::lockVariants(0x40, numLock);
        QCOMPARE(variants.size(), 4);
        for (const uint16_t locks : {0x0, 0x2, 0x10, 0x12})
            QVERIFY(variants.contains(uint16_t(0x40 | locks)));
        // Without a Num Lock modifier the variants do not repeat themselves.
        QCOMPARE(X11KeyGrabs::lockVariants(0, 0), (QList<uint16_t>{0, 0x2}));
    }
};

QTEST_GUILESS_MAIN(X11KeyTranslatorTest)
#include "X11KeyTranslatorTest.moc"
