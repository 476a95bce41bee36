// SPDX-License-Identifier: MIT
#include "settings/Preferences.h"

#include "settings/ColorHex.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <algorithm>
#include <cmath>

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
const QString LetterUsageKey = QStringLiteral("letterUsage");

constexpr qsizetype MaxUsagePerLetter = 20;

bool isNumber(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return true;
    default:
        return false;
    }
}

// The native macOS store keeps real booleans; an INI file keeps the words
// QSettings wrote. Anything else (a number, "yes", a list) is not a boolean.
std::optional<bool> readBool(const QVariant& value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString();
        if (text == QLatin1String("true"))
            return true;
        if (text == QLatin1String("false"))
            return false;
    }
    return std::nullopt;
}

// A delay must be a finite, non-negative number of seconds: a NaN or a
// negative delay would reach the overlay's timer.
std::optional<double> readDelay(const QVariant& value)
{
    double seconds = 0;
    if (isNumber(value)) {
        seconds = value.toDouble();
    } else if (value.typeId() == QMetaType::QString) {
        bool ok = false;
        seconds = value.toString().toDouble(&ok);
        if (!ok)
            return std::nullopt;
    } else {
        return std::nullopt;
    }
    if (!std::isfinite(seconds) || seconds < 0)
        return std::nullopt;
    return seconds;
}

// Only a stored string counts; an INI line with an unquoted comma reads as a
// list, which is not one.
QString readString(const QVariant& value)
{
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

std::optional<QStringList> readStrictStringList(const QVariant& value)
{
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList();
    if (value.typeId() != QMetaType::QVariantList)
        return std::nullopt;
    QStringList strings;
    for (const QVariant& element : value.toList()) {
        if (element.typeId() != QMetaType::QString)
            return std::nullopt;
        strings.append(element.toString());
    }
    return strings;
}

// QSettings' INI format writes an empty list as "@Invalid()" and a list of
// one as a bare string, so both read back as something other than a list.
// An empty bare string is taken as no list: an empty id names no app.
QStringList readTopLevelStringList(const QVariant& value)
{
    if (!value.isValid())
        return {};
    if (value.typeId() == QMetaType::QString) {
        const QString single = value.toString();
        return single.isEmpty() ? QStringList() : QStringList{single};
    }
    return readStrictStringList(value).value_or(QStringList());
}

template <typename Map> std::optional<LetterUsage> usageFromMap(const Map& map)
{
    LetterUsage usage;
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        const auto ids = readStrictStringList(it.value());
        if (!ids)
            return std::nullopt;
        usage.insert(it.key(), *ids);
    }
    return usage;
}

LetterUsage readLetterUsage(const QVariant& value)
{
    std::optional<LetterUsage> usage;
    if (value.typeId() == QMetaType::QVariantMap)
        usage = usageFromMap(value.toMap());
    else if (value.typeId() == QMetaType::QVariantHash)
        usage = usageFromMap(value.toHash());
    return usage.value_or(LetterUsage());
}

QVariantMap toVariantMap(const LetterUsage& usage)
{
    QVariantMap map;
    for (auto it = usage.cbegin(); it != usage.cend(); ++it)
        map.insert(it.key(), QVariant(it.value()));
    return map;
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

} // namespace

Preferences::Preferences(std::unique_ptr<QSettings> store, QObject* parent)
    : QObject(parent), m_store(std::move(store))
{
    Q_ASSERT(m_store);
    if (m_store->status() == QSettings::FormatError && !setAsideDamagedStore())
        return; // the damaged file stays where it is; run on the defaults
    load();
}

Preferences::~Preferences() = default;

std::unique_ptr<QSettings> Preferences::openUserStore()
{
    return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                       QStringLiteral("Velkor"), QStringLiteral("Velkor"));
}

QList<std::pair<QString, QVariant>> Preferences::registeredDefaults()
{
    return {
        {OverlayEnabledKey, true},
        {OverlayDelayKey, 0.25},
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

void Preferences::load()
{
    // The registered defaults apply wherever the store holds nothing usable.
    QSettings& s = *m_store;
    const auto flag = [&s](const QString& key, bool fallback) {
        return readBool(s.value(key)).value_or(fallback);
    };
    m_overlayEnabled = flag(OverlayEnabledKey, true);
    m_overlayDelay = readDelay(s.value(OverlayDelayKey)).value_or(0.25);
    m_overlayPosition = overlayPositionFromRaw(readString(s.value(OverlayPositionKey)))
                            .value_or(OverlayPosition::bottomRight);
    m_blurEnabled = flag(BlurKey, true);
    const QVariant accent = s.value(AccentHexKey);
    m_accentHex = accent.typeId() == QMetaType::QString ? accent.toString()
                                                        : QString::fromLatin1(DefaultAccentHex);
    m_theme = appThemeFromRaw(readString(s.value(ThemeKey))).value_or(AppTheme::system);
    m_launchAtLogin = flag(LaunchAtLoginKey, false);
    m_searchIncludesApps = flag(SearchIncludesAppsKey, true);
    m_modifierKey =
        modifierKeyFromRaw(readString(s.value(ModifierKeyKey))).value_or(ModifierKey::rightCommand);
    m_letterLaunchesApps = flag(LetterLaunchesAppsKey, true);
    m_cmdBacktickCycle = flag(CmdBacktickCycleKey, true);
    m_replaceCommandTab = flag(ReplaceCommandTabKey, false);
    m_mouseFollowsFocus = flag(MouseFollowsFocusKey, false);
    m_spaceMode =
        spaceModeFromRaw(readString(s.value(SpaceModeKey))).value_or(SpaceMode::followApp);
    m_switchOnRelease = flag(SwitchOnReleaseKey, false);
    m_excludedBundleIds = readTopLevelStringList(s.value(ExcludedBundleIdsKey));
    m_letterUsage = readLetterUsage(s.value(LetterUsageKey));
}

template <typename T>
void Preferences::assign(T& field, const T& value, void (Preferences::*notify)(),
                         const QString& key, const QVariant& stored)
{
    field = value;
    (this->*notify)();
    emit changed();
    m_store->setValue(key, stored);
}

void Preferences::setOverlayEnabled(bool value)
{
    assign(m_overlayEnabled, value, &Preferences::overlayEnabledChanged, OverlayEnabledKey, value);
}

void Preferences::setOverlayDelay(double seconds)
{
    assign(m_overlayDelay, seconds, &Preferences::overlayDelayChanged, OverlayDelayKey, seconds);
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
    assign(m_letterUsage, value, &Preferences::letterUsageChanged, LetterUsageKey,
           QVariant(toVariantMap(value)));
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
    if (!bundleId)
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
