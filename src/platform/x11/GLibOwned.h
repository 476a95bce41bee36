// SPDX-License-Identifier: MIT
#pragma once

#include <glib.h>
#include <memory>

namespace velkor::x11 {

// Owners for what GLib's calls hand back, freed the way GLib says.
struct GFree
{
    void operator()(gpointer p) const { g_free(p); }
};
using OwnedString = std::unique_ptr<gchar, GFree>;

struct StrvFree
{
    void operator()(gchar** v) const { g_strfreev(v); }
};
using OwnedStrv = std::unique_ptr<gchar*, StrvFree>;

struct KeyFileFree
{
    void operator()(GKeyFile* k) const { g_key_file_free(k); }
};
using KeyFile = std::unique_ptr<GKeyFile, KeyFileFree>;

} // namespace velkor::x11
