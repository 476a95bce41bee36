// SPDX-License-Identifier: MIT
#include "platform/x11/X11Keymap.h"

#include <cstdlib>
#include <memory>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

namespace velkor {

X11Keymap::X11Keymap(xcb_connection_t* connection)
    : m_connection(connection), m_context(xkb_context_new(XKB_CONTEXT_NO_FLAGS))
{}

X11Keymap::~X11Keymap()
{
    xkb_keymap_unref(m_keymap);
    xkb_context_unref(m_context);
}

bool X11Keymap::reload()
{
    if (!m_context)
        return false;
    const int32_t device = xkb_x11_get_core_keyboard_device_id(m_connection);
    if (device < 0)
        return false;
    xkb_keymap* fresh = xkb_x11_keymap_new_from_device(m_context, m_connection, device,
                                                       XKB_KEYMAP_COMPILE_NO_FLAGS);
    if (!fresh)
        return false;
    xkb_keymap_unref(m_keymap);
    m_keymap = fresh;
    readModifierMasks();
    return true;
}

bool X11Keymap::hasKey(xcb_keycode_t keycode) const
{
    return m_keymap && keycode >= xkb_keymap_min_keycode(m_keymap) &&
           keycode <= xkb_keymap_max_keycode(m_keymap) &&
           xkb_keymap_num_layouts_for_key(m_keymap, keycode) > 0;
}

bool X11Keymap::keyProduces(xcb_keycode_t keycode, uint32_t keysym) const
{
    const xkb_layout_index_t layouts = xkb_keymap_num_layouts_for_key(m_keymap, keycode);
    for (xkb_layout_index_t layout = 0; layout < layouts; ++layout) {
        const xkb_level_index_t levels = xkb_keymap_num_levels_for_key(m_keymap, keycode, layout);
        for (xkb_level_index_t level = 0; level < levels; ++level) {
            const xkb_keysym_t* syms = nullptr;
            const int count =
                xkb_keymap_key_get_syms_by_level(m_keymap, keycode, layout, level, &syms);
            for (int i = 0; i < count; ++i) {
                if (syms[i] == keysym)
                    return true;
            }
        }
    }
    return false;
}

// The core modifier map says which of Mod1..Mod5 the Num Lock and Super keys
// set; it differs between keymaps, so it is read, not assumed.
void X11Keymap::readModifierMasks()
{
    using Reply = std::unique_ptr<xcb_get_modifier_mapping_reply_t, decltype(&free)>;
    Reply reply(xcb_get_modifier_mapping_reply(m_connection, xcb_get_modifier_mapping(m_connection),
                                               nullptr),
                &free);
    if (!reply)
        return;
    const xcb_keycode_t* codes = xcb_get_modifier_mapping_keycodes(reply.get());
    const int perModifier = reply->keycodes_per_modifier;
    uint16_t numLock = 0;
    uint16_t super = 0;
    for (int modifier = 0; modifier < 8; ++modifier) {
        for (int i = 0; i < perModifier; ++i) {
            const xcb_keycode_t keycode = codes[modifier * perModifier + i];
            if (keycode == 0)
                continue;
            if (keyProduces(keycode, XKB_KEY_Num_Lock))
                numLock |= uint16_t(1u << modifier);
            if (keyProduces(keycode, XKB_KEY_Super_L) || keyProduces(keycode, XKB_KEY_Super_R))
                super |= uint16_t(1u << modifier);
        }
    }
    m_numLockMask = numLock;
    m_superMask = super ? super : uint16_t(XCB_MOD_MASK_4);
}

QString X11Keymap::describe(xcb_keycode_t keycode) const
{
    const QString code = QStringLiteral("keycode %1").arg(keycode);
    if (!m_keymap)
        return code;
    const xkb_keysym_t* syms = nullptr;
    if (xkb_keymap_key_get_syms_by_level(m_keymap, keycode, 0, 0, &syms) < 1)
        return code;
    char name[64];
    if (xkb_keysym_get_name(syms[0], name, sizeof name) < 0)
        return code;
    return QStringLiteral("%1 (%2)").arg(QString::fromLatin1(name), code);
}

} // namespace velkor
