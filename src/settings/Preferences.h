// SPDX-License-Identifier: MIT
#pragma once

#include "settings/LetterUsageStore.h"
#include "settings/SettingsEnums.h"

#include <QObject>
#include <QSettings>
#include <QStringList>
#include <QTimer>
#include <memory>
#include <optional>
#include <utility>

namespace velkor {

// The persisted settings. Every property is loaded once at construction: bad
// stored values fall back to their defaults and values out of range are
// brought within what the settings window can set, in memory only (the store
// keeps what it holds until the setting is next assigned). An assignment
// writes the value unless the store holds it already, so that assigning an
// unchanged value leaves the file alone. The learnt letter order, which
// switches change, is written a few seconds after a change, once for all
// the changes made meanwhile.
class Preferences : public QObject
{
    Q_OBJECT
public:
    // Takes ownership of the store. An INI store that cannot be parsed at all
    // is moved aside (renamed, never deleted) and a fresh one is used.
    explicit Preferences(std::unique_ptr<QSettings> store, QObject* parent = nullptr);
    ~Preferences() override;

    // The user's store: the native format (user defaults on macOS, an INI
    // file under the XDG config folder on Linux).
    // Call setApplicationIdentity() first.
    static std::unique_ptr<QSettings> openUserStore();

    // The organisation and application names and domain the user's store
    // (and the rest of the application) is known by.
    static void setApplicationIdentity();

    // The registered defaults: key and value of every setting that has one,
    // in declaration order. The two lists default to empty in code.
    static QList<std::pair<QString, QVariant>> registeredDefaults();

    // The overlay delay the settings window offers: 0 to 1 s in steps of 0.05 s.
    static constexpr double MaxOverlayDelay = 1.0;
    static constexpr int OverlayDelayStepsPerSecond = 20;
    // A delay within that range, on its grid; not a number gives the default.
    static double overlayDelayWithinRange(double seconds);

    bool overlayEnabled() const { return m_overlayEnabled; }
    double overlayDelay() const { return m_overlayDelay; }
    OverlayPosition overlayPosition() const { return m_overlayPosition; }
    bool blurEnabled() const { return m_blurEnabled; }
    QString accentHex() const { return m_accentHex; }
    AppTheme theme() const { return m_theme; }
    bool launchAtLogin() const { return m_launchAtLogin; }
    bool searchIncludesApps() const { return m_searchIncludesApps; }
    ModifierKey modifierKey() const { return m_modifierKey; }
    bool letterLaunchesApps() const { return m_letterLaunchesApps; }
    bool cmdBacktickCycle() const { return m_cmdBacktickCycle; }
    bool replaceCommandTab() const { return m_replaceCommandTab; }
    bool mouseFollowsFocus() const { return m_mouseFollowsFocus; }
    SpaceMode spaceMode() const { return m_spaceMode; }
    bool switchOnRelease() const { return m_switchOnRelease; }
    QStringList excludedBundleIds() const { return m_excludedBundleIds; }
    LetterUsage letterUsage() const { return m_letterUsage; }

    // Each setter notifies, even when the value is unchanged, then writes to
    // the store unless it holds the value already.
    void setOverlayEnabled(bool value);
    void setOverlayDelay(double seconds);
    void setOverlayPosition(OverlayPosition value);
    void setBlurEnabled(bool value);
    void setAccentHex(const QString& value);
    void setTheme(AppTheme value);
    void setLaunchAtLogin(bool value);
    void setSearchIncludesApps(bool value);
    void setModifierKey(ModifierKey value);
    void setLetterLaunchesApps(bool value);
    void setCmdBacktickCycle(bool value);
    void setReplaceCommandTab(bool value);
    void setMouseFollowsFocus(bool value);
    void setSpaceMode(SpaceMode value);
    void setSwitchOnRelease(bool value);
    void setExcludedBundleIds(const QStringList& value);
    void setLetterUsage(const LetterUsage& value);

    // Adds or removes one id; the stored list stays sorted and duplicate-free.
    void setExcluded(bool excluded, const QString& bundleId);

    // Notes that bundleId was chosen with letter: it moves to the front of
    // that letter's list. Without a bundle id nothing happens.
    void recordLetterUsage(const QString& letter, const std::optional<QString>& bundleId);

    QSettings& store() { return *m_store; }

    // The learnt letter order is written a few seconds after it changes, and
    // at the latest when this object goes (or the program exits); this
    // writes what is still unwritten at once.
    void writeLetterUsageNow();

signals:
    // One signal per setting, plus changed() after any of them.
    void overlayEnabledChanged();
    void overlayDelayChanged();
    void overlayPositionChanged();
    void blurEnabledChanged();
    void accentHexChanged();
    void themeChanged();
    void launchAtLoginChanged();
    void searchIncludesAppsChanged();
    void modifierKeyChanged();
    void letterLaunchesAppsChanged();
    void cmdBacktickCycleChanged();
    void replaceCommandTabChanged();
    void mouseFollowsFocusChanged();
    void spaceModeChanged();
    void switchOnReleaseChanged();
    void excludedBundleIdsChanged();
    void letterUsageChanged();
    void changed();

private:
    void load();
    bool setAsideDamagedStore();
    template <typename T>
    void assign(T& field, const T& value, void (Preferences::*notify)(), const QString& key,
                const QVariant& stored);

    static constexpr int LetterUsageWriteDelayMs = 3000;

    std::unique_ptr<QSettings> m_store;
    QTimer m_letterUsageWrite;
    bool m_overlayEnabled = true;
    double m_overlayDelay = 0.25;
    OverlayPosition m_overlayPosition = OverlayPosition::bottomRight;
    bool m_blurEnabled = true;
    QString m_accentHex = QStringLiteral("#FEBC2E");
    AppTheme m_theme = AppTheme::system;
    bool m_launchAtLogin = false;
    bool m_searchIncludesApps = true;
    ModifierKey m_modifierKey = ModifierKey::rightCommand;
    bool m_letterLaunchesApps = true;
    bool m_cmdBacktickCycle = true;
    bool m_replaceCommandTab = false;
    bool m_mouseFollowsFocus = false;
    SpaceMode m_spaceMode = SpaceMode::followApp;
    bool m_switchOnRelease = false;
    QStringList m_excludedBundleIds;
    LetterUsage m_letterUsage;
};

} // namespace velkor
