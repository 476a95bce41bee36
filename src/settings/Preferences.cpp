// SPDX-License-Identifier: MIT
#include "settings/Preferences.h"

#include "settings/ColorHex.h"
#include "settings/StoredValues.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSet>
#include <algorithm>
#include <cmath>
#include <utility>

Q_LOGGING_CATEGORY(lcSettings, "velkor.settings")

namespace velkor {

namespace {

const QString OverlayEnabledKey = QStringLiteral("overlayEnabled");
const QString OverlayDelayKey = QStringLiteral("overlayDelay");
const QString OverlayPositionKey = QStringLiteral("overlayPosition");
const QString BlurKey = QStringLiteral("overlayBlur");
const QString AccentHexKey = QStringLiteral("accentHex");
const QString ThemeKey = QStringLiteral("theme");
const QString LaunchAtLoginKey = QStringLiteral("launchAtLogin");
const QString SearchIncludesAppsKey = QStringLiteral("searchIncludesApps");
const QString ModifierKeyKey = QStringLiteral("modifierKey");
const QString LetterLaunchesAppsKey = QStringLiteral("letterLaunchesApps");
const QString CmdBacktickCycleKey = QStringLiteral("cmdBacktickCycle");
const QString ReplaceCommandTabKey = QStringLiteral("replaceCommandTab");
const QString MouseFollowsFocusKey = QStringLiteral("mouseFollowsFocus");
const QString SpaceModeKey = QStringLiteral("spaceMode");
const QString SwitchOnReleaseKey = QStringLiteral("switchOnRelease");
const QString ExcludedBundleIdsKey = QStringLiteral("excludedBundleIds");

constexpr qsizetype MaxUsagePerLetter = 20;
constexpr double DefaultOverlayDelay = 0.25;

// Each letter's list as recordLetterUsage() keeps it: no id twice, the most
// recent twenty.
LetterUsage withinUsageLimits(LetterUsage usage)
{
    for (QStringList& ids : usage) {
        ids.removeDuplicates();
        if (ids.size() > MaxUsagePerLetter)
            ids.resize(MaxUsagePerLetter);
    }
    return usage;
}

// UTF-8 byte order is code-point order; QString's own operator< compares
// UTF-16 units, which puts characters above U+FFFF before U+E000..U+FFFF.
bool codePointLess(const QString& a, const QString& b)
{
    return a.toUtf8() < b.toUtf8();
}

QString freeAsidePath(const QString& path)
{
    const QString stamp =
        QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    const QString base = path + QStringLiteral(".damaged-") + stamp;
    QString candidate = base;
    for (int n = 2; QFileInfo::exists(candidate); ++n)
        candidate = base + QLatin1Char('-') + QString::number(n);
    return candidate;
}

// Letter orders not yet written, kept for a program that ends through exit()
// rather than by returning from main: Qt's way out when the X server goes
// away. Constructed on first use, after Qt's own statics, so it is
// destroyed, and writes, before them.
class UnwrittenAtExit
{
public:
    ~UnwrittenAtExit()
    {
        for (Preferences* prefs : std::exchange(m_pending, {}))
            prefs->writeLetterUsageNow();
    }
    void add(Preferences* prefs) { m_pending.insert(prefs); }
    void remove(Preferences* prefs) { m_pending.remove(prefs); }

private:
    QSet<Preferences*> m_pending;
};

UnwrittenAtExit& unwrittenAtExit()
{
    static UnwrittenAtExit pending;
    return pending;
}

} // namespace

Preferences::Preferences(std::unique_ptr<QSettings> store, QObject* parent)
    : QObject(parent), m_store(std::move(store))
{
    Q_ASSERT(m_store);
    m_letterUsageWrite.setSingleShot(true);
    m_letterUsageWrite.setInterval(LetterUsageWriteDelayMs);
    connect(&m_letterUsageWrite, &QTimer::timeout, this, &Preferences::writeLetterUsageNow);
    if (m_store->status() == QSettings::FormatError && !setAsideDamagedStore())
        return; // the damaged file stays where it is; run on the defaults
    load();
}

Preferences::~Preferences()
{
    writeLetterUsageNow();
}

void Preferences::setApplicationIdentity()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Velkor"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("velkor.org"));
    QCoreApplication::setApplicationName(QStringLiteral("Velkor"));
}

std::unique_ptr<QSettings> Preferences::openUserStore()
{
    // The application's identity picks the store: on macOS the organisation
    // domain names the user-defaults domain, which is then the bundle's own
    // (org.velkor.Velkor); elsewhere the organisation and application names
    // give the file.
    return std::make_unique<QSettings>(QSettings::UserScope);
}

QList<std::pair<QString, QVariant>> Preferences::registeredDefaults()
{
    return {
        {OverlayEnabledKey, true},
        {OverlayDelayKey, DefaultOverlayDelay},
        {OverlayPositionKey, rawValue(OverlayPosition::bottomRight)},
        {BlurKey, true},
        {AccentHexKey, QString::fromLatin1(DefaultAccentHex)},
        {ThemeKey, rawValue(AppTheme::system)},
        {LaunchAtLoginKey, false},
        {SearchIncludesAppsKey, true},
        {ModifierKeyKey, rawValue(ModifierKey::rightCommand)},
        {LetterLaunchesAppsKey, true},
        {CmdBacktickCycleKey, true},
        {ReplaceCommandTabKey, false},
        {MouseFollowsFocusKey, false},
        {SpaceModeKey, rawValue(SpaceMode::followApp)},
        {SwitchOnReleaseKey, false},
    };
}

// A file QSettings cannot parse would be overwritten, with whatever part of
// it was understood, at the first write. Keep it for the user instead.
bool Preferences::setAsideDamagedStore()
{
    const QString path = m_store->fileName();
    const QSettings::Format format = m_store->format();
    if (!QFileInfo(path).isFile())
        return false;
    const QString aside = freeAsidePath(path);
    m_store.reset();
    const bool moved = QFile::rename(path, aside);
    m_store = std::make_unique<QSettings>(path, format);
    if (!moved) {
        qCWarning(lcSettings).noquote()
            << "settings file" << path << "cannot be read and could not be moved aside;"
            << "using the defaults";
        return false;
    }
    qCWarning(lcSettings).noquote() << "settings file" << path << "cannot be read; moved it to"
                                    << aside << "and using the defaults";
    return true;
}

double Preferences::overlayDelayWithinRange(double seconds)
{
    if (!std::isfinite(seconds))
        return DefaultOverlayDelay;
    const double clamped = std::clamp(seconds, 0.0, MaxOverlayDelay);
    // + 0.0 turns a -0 into 0.
    return std::round(clamped * OverlayDelayStepsPerSecond) / OverlayDelayStepsPerSecond + 0.0;
}

void Preferences::load()
{
    // The registered defaults apply wherever the store holds nothing usable.
    QSettings& s = *m_store;
    const auto flag = [&s](const QString& key, bool fallback) {
        return storedBool(s.value(key)).value_or(fallback);
    };
    const auto text = [&s](const QString& key) {
        return storedString(s.value(key)).value_or(QString());
    };
    m_overlayEnabled = flag(OverlayEnabledKey, true);
    // A delay of days would overflow the overlay's timer; a negative one
    // means no wait.
    const std::optional<double> delay = storedNumber(s.value(OverlayDelayKey));
    m_overlayDelay = delay ? overlayDelayWithinRange(*delay) : DefaultOverlayDelay;
    m_overlayPosition =
        overlayPositionFromRaw(text(OverlayPositionKey)).value_or(OverlayPosition::bottomRight);
    m_blurEnabled = flag(BlurKey, true);
    m_accentHex =
        storedString(s.value(AccentHexKey)).value_or(QString::fromLatin1(DefaultAccentHex));
    m_theme = appThemeFromRaw(text(ThemeKey)).value_or(AppTheme::system);
    m_launchAtLogin = flag(LaunchAtLoginKey, false);
    m_searchIncludesApps = flag(SearchIncludesAppsKey, true);
    m_modifierKey = modifierKeyFromRaw(text(ModifierKeyKey)).value_or(ModifierKey::rightCommand);
    m_letterLaunchesApps = flag(LetterLaunchesAppsKey, true);
    m_cmdBacktickCycle = flag(CmdBacktickCycleKey, true);
    m_replaceCommandTab = flag(ReplaceCommandTabKey, false);
    m_mouseFollowsFocus = flag(MouseFollowsFocusKey, false);
    m_spaceMode = spaceModeFromRaw(text(SpaceModeKey)).value_or(SpaceMode::followApp);
    m_switchOnRelease = flag(SwitchOnReleaseKey, false);
    m_excludedBundleIds = storedStringList(s.value(ExcludedBundleIdsKey)).value_or(QStringList());
    m_letterUsage = withinUsageLimits(LetterUsageStore(s).read());
}

template <typename T>
void Preferences::assign(T& field, const T& value, void (Preferences::*notify)(),
                         const QString& key, const QVariant& stored)
{
    field = value;
    (this->*notify)();
    emit changed();
    if (!storeHolds(*m_store, key, stored))
        m_store->setValue(key, stored);
}

void Preferences::setOverlayEnabled(bool value)
{
    assign(m_overlayEnabled, value, &Preferences::overlayEnabledChanged, OverlayEnabledKey, value);
}

void Preferences::setOverlayDelay(double seconds)
{
    const double delay = overlayDelayWithinRange(seconds);
    assign(m_overlayDelay, delay, &Preferences::overlayDelayChanged, OverlayDelayKey, delay);
}

void Preferences::setOverlayPosition(OverlayPosition value)
{
    assign(m_overlayPosition, value, &Preferences::overlayPositionChanged, OverlayPositionKey,
           rawValue(value));
}

void Preferences::setBlurEnabled(bool value)
{
    assign(m_blurEnabled, value, &Preferences::blurEnabledChanged, BlurKey, value);
}

void Preferences::setAccentHex(const QString& value)
{
    assign(m_accentHex, value, &Preferences::accentHexChanged, AccentHexKey, value);
}

void Preferences::setTheme(AppTheme value)
{
    assign(m_theme, value, &Preferences::themeChanged, ThemeKey, rawValue(value));
}

void Preferences::setLaunchAtLogin(bool value)
{
    assign(m_launchAtLogin, value, &Preferences::launchAtLoginChanged, LaunchAtLoginKey, value);
}

void Preferences::setSearchIncludesApps(bool value)
{
    assign(m_searchIncludesApps, value, &Preferences::searchIncludesAppsChanged,
           SearchIncludesAppsKey, value);
}

void Preferences::setModifierKey(ModifierKey value)
{
    assign(m_modifierKey, value, &Preferences::modifierKeyChanged, ModifierKeyKey, rawValue(value));
}

void Preferences::setLetterLaunchesApps(bool value)
{
    assign(m_letterLaunchesApps, value, &Preferences::letterLaunchesAppsChanged,
           LetterLaunchesAppsKey, value);
}

void Preferences::setCmdBacktickCycle(bool value)
{
    assign(m_cmdBacktickCycle, value, &Preferences::cmdBacktickCycleChanged, CmdBacktickCycleKey,
           value);
}

void Preferences::setReplaceCommandTab(bool value)
{
    assign(m_replaceCommandTab, value, &Preferences::replaceCommandTabChanged, ReplaceCommandTabKey,
           value);
}

void Preferences::setMouseFollowsFocus(bool value)
{
    assign(m_mouseFollowsFocus, value, &Preferences::mouseFollowsFocusChanged, MouseFollowsFocusKey,
           value);
}

void Preferences::setSpaceMode(SpaceMode value)
{
    assign(m_spaceMode, value, &Preferences::spaceModeChanged, SpaceModeKey, rawValue(value));
}

void Preferences::setSwitchOnRelease(bool value)
{
    assign(m_switchOnRelease, value, &Preferences::switchOnReleaseChanged, SwitchOnReleaseKey,
           value);
}

void Preferences::setExcludedBundleIds(const QStringList& value)
{
    assign(m_excludedBundleIds, value, &Preferences::excludedBundleIdsChanged, ExcludedBundleIdsKey,
           QVariant(value));
}

void Preferences::setLetterUsage(const LetterUsage& value)
{
    m_letterUsage = value;
    emit letterUsageChanged();
    emit changed();
    // Every switch may reorder a letter; a burst of switches is one write
    // of the file (with its lock file and flush to disk), not one each.
    if (!m_letterUsageWrite.isActive()) {
        m_letterUsageWrite.start();
        unwrittenAtExit().add(this);
    }
}

void Preferences::writeLetterUsageNow()
{
    if (!m_letterUsageWrite.isActive())
        return;
    m_letterUsageWrite.stop();
    unwrittenAtExit().remove(this);
    LetterUsageStore(*m_store).write(m_letterUsage);
    m_store->sync();
}

void Preferences::setExcluded(bool excluded, const QString& bundleId)
{
    QStringList ids = m_excludedBundleIds;
    if (excluded)
        ids.append(bundleId);
    else
        ids.removeAll(bundleId);
    std::sort(ids.begin(), ids.end(), codePointLess);
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    setExcludedBundleIds(ids);
}

void Preferences::recordLetterUsage(const QString& letter, const std::optional<QString>& bundleId)
{
    if (!bundleId || letter.isEmpty())
        return;
    // Composed, like the letter map's keys, so that é typed as e + U+0301
    // and é typed as one character share one history.
    const QString key = letter.toLower().normalized(QString::NormalizationForm_C);
    LetterUsage usage = m_letterUsage;
    QStringList ids = usage.value(key);
    ids.removeAll(*bundleId);
    ids.prepend(*bundleId);
    if (ids.size() > MaxUsagePerLetter)
        ids.resize(MaxUsagePerLetter);
    usage.insert(key, ids);
    setLetterUsage(usage);
}

} // namespace velkor
