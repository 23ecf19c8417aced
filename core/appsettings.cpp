#include "core/appsettings.h"

#include "core/records.h"
#include "core/userdefaults.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

const QHash<QString, QStringList> &enumerations()
{
    static const QHash<QString, QStringList> cases{
        {u"Appearance"_s, {u"system"_s, u"light"_s, u"dark"_s}},
        {u"CardShape"_s, {u"original"_s, u"square"_s, u"rectangle"_s}},
        {u"ListRowStyle"_s, {u"oneLine"_s, u"stacked"_s}},
        {u"ShelfPreviewSize"_s, {u"small"_s, u"medium"_s, u"large"_s}},
        {u"ShelfMotion"_s, {u"standard"_s, u"fluid"_s}},
        {u"FullscreenStyle"_s, {u"wholeScreen"_s, u"stayInWindow"_s}},
        {u"CaptureDestination"_s, {u"inbox"_s, u"picker"_s, u"auto"_s}},
        {u"BackupSchedule"_s, {u"off"_s, u"daily"_s, u"weekly"_s}},
        {u"DropRingModifier"_s, {u"control"_s, u"command"_s, u"option"_s, u"shift"_s}},
        {u"ItemSort"_s, {u"newest"_s, u"oldest"_s}},
        {u"CollectionSort"_s, {u"manual"_s, u"name"_s, u"recentlyUsed"_s, u"recentlyCreated"_s}},
    };
    return cases;
}

QStringList allKindNames()
{
    QStringList names;
    for (const ItemKind kind : allItemKinds())
        names.append(rawString(kind));
    return names;
}

/** A stored raw string when it names a case, else the fallback. */
QString validCase(const QString &enumeration, const QVariant &stored, const QString &fallback)
{
    const QString raw = stored.toString();
    return enumerations().value(enumeration).contains(raw) ? raw : fallback;
}

QStringList validKinds(const QStringList &names)
{
    QStringList kinds;
    for (const QString &name : names) {
        if (itemKindFromRaw(name))
            kinds.append(name);
    }
    return kinds;
}

double unitClamp(double value)
{
    return std::clamp(value, 0.0, 1.0);
}

QVariant readValue(const UserDefaults &defaults, const QString &key, const QString &viewKey)
{
    if (!viewKey.isEmpty()) {
        const QString dotted = key + u'.' + viewKey;
        if (defaults.contains(dotted))
            return defaults.value(dotted);
    }
    return defaults.value(key);
}

bool readBool(const QVariant &stored, bool fallback)
{
    return stored.isValid() ? stored.toBool() : fallback;
}

double readDouble(const QVariant &stored, double fallback)
{
    bool ok = false;
    const double value = stored.toDouble(&ok);
    return ok ? value : fallback;
}

int readInt(const QVariant &stored, int fallback)
{
    bool ok = false;
    const int value = stored.toInt(&ok);
    return ok ? value : fallback;
}

QString readString(const QVariant &stored, const QString &fallback)
{
    return stored.isValid() ? stored.toString() : fallback;
}

QStringList readList(const QVariant &stored, const QStringList &fallback)
{
    if (!stored.isValid())
        return fallback;
    // The settings file gives a one-element list back as a plain string.
    if (stored.typeId() == QMetaType::QString)
        return stored.toString().isEmpty() ? QStringList() : QStringList{stored.toString()};
    return stored.toStringList();
}

template<typename T> bool update(AppSettings *settings, T &member, const T &value, void (AppSettings::*changed)())
{
    if (member == value)
        return false;
    member = value;
    Q_EMIT(settings->*changed)();
    return true;
}

} // namespace

AppSettings::AppSettings(QObject *parent)
    : QObject(parent)
{
    m_rimSaveTask.setSingleShot(true);
    m_rimSaveTask.setInterval(300);
    connect(&m_rimSaveTask, &QTimer::timeout, this, [this] { store(u"rimSolidity"_s, m_rimSolidity, false); });
    applyOneTimeChanges();
    loadGlobalKeys();
    loadViewPreferences(m_currentViewKey);
}

AppSettings::~AppSettings()
{
    flush();
}

QStringList AppSettings::enumerationCases(const QString &enumeration)
{
    return enumerations().value(enumeration);
}

void AppSettings::flush()
{
    if (m_rimSaveTask.isActive()) {
        m_rimSaveTask.stop();
        store(u"rimSolidity"_s, m_rimSolidity, false);
    }
}

void AppSettings::applyOneTimeChanges()
{
    UserDefaults defaults;
    // The launcher once moved to option-B and the shelf took its place; the move was then undone.
    if (!defaults.contains(u"launcherOnOptionB"_s)) {
        defaults.setValue(u"launcherOnOptionB"_s, true);
        if (defaults.contains(u"shelfEnabled"_s))
            defaults.setValue(u"shelfEnabled"_s, true);
        defaults.setValue(u"launcherHotkeyKeyCode"_s, 11);
        defaults.setValue(u"launcherHotkeyModifiers"_s, 2048);
        defaults.setValue(u"shelfHotkeyKeyCode"_s, 46);
        defaults.setValue(u"shelfHotkeyModifiers"_s, 768);
    }
    if (!defaults.contains(u"launcherHandoffUndone"_s)) {
        defaults.setValue(u"launcherHandoffUndone"_s, true);
        if (defaults.integerValue(u"launcherHotkeyKeyCode"_s, 40) == 11
            && defaults.integerValue(u"launcherHotkeyModifiers"_s, 768) == 2048) {
            defaults.setValue(u"launcherHotkeyKeyCode"_s, 40);
            defaults.setValue(u"launcherHotkeyModifiers"_s, 768);
        }
    }
}

void AppSettings::store(const QString &key, const QVariant &value, bool perView)
{
    UserDefaults defaults;
    if (!perView) {
        if (value.isValid())
            defaults.setValue(key, value);
        else
            defaults.remove(key);
        return;
    }
    if (m_loadingViewPrefs)
        return;
    defaults.setValue(key + u'.' + m_currentViewKey, value);
}

void AppSettings::setCloudPromptKeySet(bool value)
{
    if (m_cloudPromptKeySet == value)
        return;
    m_cloudPromptKeySet = value;
    Q_EMIT cloudPromptKeySetChanged();
}

void AppSettings::loadGlobalKeys()
{
    const UserDefaults defaults;
    m_appearance = validCase(u"Appearance"_s, defaults.value(u"appearance"_s), u"system"_s);
    m_sidebarWidth = readDouble(defaults.value(u"sidebarWidth"_s), 228.0);
    m_sidebarVisible = readBool(defaults.value(u"sidebarVisible"_s), true);
    m_sidebarToggleKeyCode = readInt(defaults.value(u"sidebarToggleKeyCode"_s), 1);
    m_sidebarToggleModifiers = readInt(defaults.value(u"sidebarToggleModifiers"_s), 4352);
    m_showSidebarCounts = readBool(defaults.value(u"showSidebarCounts"_s), true);
    m_libraryBackgroundRecents = readList(defaults.value(u"libraryBackgroundRecents"_s), QStringList());
    m_dropPopupExcludedApps = readList(defaults.value(u"dropPopupExcludedApps"_s), QStringList{u"flameshot"_s});
    m_collapsedInfoSections = readList(defaults.value(u"collapsedInfoSections"_s), QStringList());
    m_dropRingBrowsersOnly = readBool(defaults.value(u"dropRingBrowsersOnly"_s), false);
    m_dropRingRequireModifier = readBool(defaults.value(u"dropRingRequireModifier"_s), true);
    m_dropRingModifier = validCase(u"DropRingModifier"_s, defaults.value(u"dropRingModifier"_s), u"control"_s);
    m_collectionsSectionExpanded = readBool(defaults.value(u"collectionsSectionExpanded"_s), true);
    m_typesSectionExpanded = readBool(defaults.value(u"typesSectionExpanded"_s), true);
    m_pinnedSectionExpanded = readBool(defaults.value(u"pinnedSectionExpanded"_s), true);
    m_collectionSort = validCase(u"CollectionSort"_s, defaults.value(u"collectionSort"_s), u"manual"_s);
    m_collectionSortReversed = readBool(defaults.value(u"collectionSortReversed"_s), false);
    m_shelfEdgeTrigger = readBool(defaults.value(u"shelfEdgeTrigger"_s), true);
    m_shelfEdgeGap = readDouble(defaults.value(u"shelfEdgeGap"_s), 26.0);
    m_shelfTopGap = readDouble(defaults.value(u"shelfTopGap"_s), 40.0);
    m_shelfBottomGap = readDouble(defaults.value(u"shelfBottomGap"_s), 40.0);
    m_shelfMotion = validCase(u"ShelfMotion"_s, defaults.value(u"shelfMotion"_s), u"standard"_s);
    m_shelfPreviewSize = validCase(u"ShelfPreviewSize"_s, defaults.value(u"shelfPreviewSize"_s), u"medium"_s);
    m_shelfEnabled = readBool(defaults.value(u"shelfEnabled"_s), false);
    m_fullscreenStyle = validCase(u"FullscreenStyle"_s, defaults.value(u"fullscreenStyle"_s), u"wholeScreen"_s);
    m_clipperKey = readString(defaults.value(u"clipperKey"_s), QString());
    m_clipperShift = readBool(defaults.value(u"clipperShift"_s), false);
    m_clipperAlt = readBool(defaults.value(u"clipperAlt"_s), false);
    m_clipperCtrl = readBool(defaults.value(u"clipperCtrl"_s), false);
    m_clipperMeta = readBool(defaults.value(u"clipperMeta"_s), false);
    m_clipperOptionHold = readBool(defaults.value(u"clipperOptionHold"_s), false);
    m_screenshotHotkeyKeyCode = readInt(defaults.value(u"screenshotHotkeyKeyCode"_s), 1);
    m_screenshotHotkeyModifiers = readInt(defaults.value(u"screenshotHotkeyModifiers"_s), 768);
    m_shelfHotkeyKeyCode = readInt(defaults.value(u"shelfHotkeyKeyCode"_s), 46);
    m_shelfHotkeyModifiers = readInt(defaults.value(u"shelfHotkeyModifiers"_s), 768);
    m_shelfPinHotkeyKeyCode = readInt(defaults.value(u"shelfPinHotkeyKeyCode"_s), 35);
    m_shelfPinHotkeyModifiers = readInt(defaults.value(u"shelfPinHotkeyModifiers"_s), 768);
    m_savePageHotkeyKeyCode = readInt(defaults.value(u"savePageHotkeyKeyCode"_s), 11);
    m_savePageHotkeyModifiers = readInt(defaults.value(u"savePageHotkeyModifiers"_s), 768);
    m_launcherHotkeyKeyCode = readInt(defaults.value(u"launcherHotkeyKeyCode"_s), 40);
    m_launcherHotkeyModifiers = readInt(defaults.value(u"launcherHotkeyModifiers"_s), 768);
    m_visionHotkeyKeyCode = readInt(defaults.value(u"visionHotkeyKeyCode"_s), 9);
    m_visionHotkeyModifiers = readInt(defaults.value(u"visionHotkeyModifiers"_s), 768);
    m_lastFiledCollectionId = readString(defaults.value(u"lastFiledCollectionId"_s), QString());
    m_captureCardEnabled = readBool(defaults.value(u"captureCardEnabled"_s), true);
    m_captureDestination = validCase(u"CaptureDestination"_s, defaults.value(u"captureDestination"_s), u"inbox"_s);
    m_xBookmarkSyncEnabled = readBool(defaults.value(u"xBookmarkSyncEnabled"_s), false);
    m_sidebarSolidity = unitClamp(readDouble(defaults.value(u"sidebarSolidity"_s), 0.55));
    m_rimSolidity = unitClamp(readDouble(defaults.value(u"rimSolidity"_s), 0.0));
    m_playCaptureSound = readBool(defaults.value(u"playCaptureSound"_s), true);
    m_captureSoundVolume = readDouble(defaults.value(u"captureSoundVolume"_s), 0.7);
    m_captureSoundName = readString(defaults.value(u"captureSoundName"_s), u"Collect"_s);
    m_cloudPromptConsented = readBool(defaults.value(u"cloudPromptConsented"_s), false);
    m_claudeAutoTags = readBool(defaults.value(u"claudeAutoTags"_s), true);
    m_claudeSmartSearch = readBool(defaults.value(u"claudeSmartSearch"_s), true);
    m_backupDestination = readString(defaults.value(u"backupDestination"_s), QString());
    m_downloadsFolder = readString(defaults.value(u"downloadsFolder"_s), QString());
    m_backupSchedule = validCase(u"BackupSchedule"_s, defaults.value(u"backupSchedule"_s), u"off"_s);
    m_backupKeepVersions = readInt(defaults.value(u"backupKeepVersions"_s), 5);
    m_lastBackupAt = readDouble(defaults.value(u"lastBackupAt"_s), 0.0);
    m_backupAtFixedTime = readBool(defaults.value(u"backupAtFixedTime"_s), false);
    m_backupHour = readInt(defaults.value(u"backupHour"_s), 3);
}

QString AppSettings::itemSortFor(const QString &viewKey) const
{
    return validCase(u"ItemSort"_s, readValue(UserDefaults(), u"itemSort"_s, viewKey), u"newest"_s);
}

void AppSettings::loadViewPreferences(const QString &viewKey)
{
    if (m_currentViewKey != viewKey) {
        m_currentViewKey = viewKey;
        Q_EMIT currentViewKeyChanged();
    }
    m_loadingViewPrefs = true;
    const UserDefaults defaults;
    setCardShape(validCase(u"CardShape"_s, readValue(defaults, u"cardShape"_s, viewKey), u"original"_s));
    setListRowStyle(validCase(u"ListRowStyle"_s, readValue(defaults, u"listRowStyle"_s, viewKey), u"oneLine"_s));
    setCardShowTitle(readBool(readValue(defaults, u"cardShowTitle"_s, viewKey), false));
    setCardShowTags(readBool(readValue(defaults, u"cardShowTags"_s, viewKey), false));
    setListShowDomain(readBool(readValue(defaults, u"listShowDomain"_s, viewKey), true));
    setListShowDate(readBool(readValue(defaults, u"listShowDate"_s, viewKey), false));
    setListShowTags(readBool(readValue(defaults, u"listShowTags"_s, viewKey), false));
    setListShowSize(readBool(readValue(defaults, u"listShowSize"_s, viewKey), false));
    setLinkPreviews(readBool(readValue(defaults, u"linkPreviews"_s, viewKey), false));
    setCardShowLinkDescription(readBool(readValue(defaults, u"cardShowLinkDescription"_s, viewKey), false));
    setGridColumns(readDouble(readValue(defaults, u"gridColumns"_s, viewKey), 4.0));
    setGridSpacing(readDouble(readValue(defaults, u"gridSpacing"_s, viewKey), 14.0));
    setLibraryBackgroundHex(readString(readValue(defaults, u"libraryBackgroundHex"_s, viewKey), QString()));
    setAllViewKinds(validKinds(readList(readValue(defaults, u"allViewKinds"_s, viewKey), allKindNames())));
    setItemSort(validCase(u"ItemSort"_s, readValue(defaults, u"itemSort"_s, viewKey), u"newest"_s));
    m_loadingViewPrefs = false;
}

void AppSettings::setAppearance(const QString &value)
{
    const QString accepted = validCase(u"Appearance"_s, value, m_appearance);
    if (update(this, m_appearance, accepted, &AppSettings::appearanceChanged))
        store(u"appearance"_s, accepted, false);
}

void AppSettings::setCardShape(const QString &value)
{
    const QString accepted = validCase(u"CardShape"_s, value, m_cardShape);
    if (update(this, m_cardShape, accepted, &AppSettings::cardShapeChanged))
        store(u"cardShape"_s, accepted, true);
}

void AppSettings::setListRowStyle(const QString &value)
{
    const QString accepted = validCase(u"ListRowStyle"_s, value, m_listRowStyle);
    if (update(this, m_listRowStyle, accepted, &AppSettings::listRowStyleChanged))
        store(u"listRowStyle"_s, accepted, true);
}

void AppSettings::setSidebarWidth(double value)
{
    if (update(this, m_sidebarWidth, value, &AppSettings::sidebarWidthChanged))
        store(u"sidebarWidth"_s, value, false);
}

void AppSettings::setSidebarVisible(bool value)
{
    if (update(this, m_sidebarVisible, value, &AppSettings::sidebarVisibleChanged))
        store(u"sidebarVisible"_s, value, false);
}

void AppSettings::setSidebarToggleKeyCode(int value)
{
    if (update(this, m_sidebarToggleKeyCode, value, &AppSettings::sidebarToggleKeyCodeChanged))
        store(u"sidebarToggleKeyCode"_s, value, false);
}

void AppSettings::setSidebarToggleModifiers(int value)
{
    if (update(this, m_sidebarToggleModifiers, value, &AppSettings::sidebarToggleModifiersChanged))
        store(u"sidebarToggleModifiers"_s, value, false);
}

void AppSettings::setShowSidebarCounts(bool value)
{
    if (update(this, m_showSidebarCounts, value, &AppSettings::showSidebarCountsChanged))
        store(u"showSidebarCounts"_s, value, false);
}

void AppSettings::setCardShowTitle(bool value)
{
    if (update(this, m_cardShowTitle, value, &AppSettings::cardShowTitleChanged))
        store(u"cardShowTitle"_s, value, true);
}

void AppSettings::setCardShowTags(bool value)
{
    if (update(this, m_cardShowTags, value, &AppSettings::cardShowTagsChanged))
        store(u"cardShowTags"_s, value, true);
}

void AppSettings::setListShowDomain(bool value)
{
    if (update(this, m_listShowDomain, value, &AppSettings::listShowDomainChanged))
        store(u"listShowDomain"_s, value, true);
}

void AppSettings::setListShowDate(bool value)
{
    if (update(this, m_listShowDate, value, &AppSettings::listShowDateChanged))
        store(u"listShowDate"_s, value, true);
}

void AppSettings::setListShowTags(bool value)
{
    if (update(this, m_listShowTags, value, &AppSettings::listShowTagsChanged))
        store(u"listShowTags"_s, value, true);
}

void AppSettings::setListShowSize(bool value)
{
    if (update(this, m_listShowSize, value, &AppSettings::listShowSizeChanged))
        store(u"listShowSize"_s, value, true);
}

void AppSettings::setLinkPreviews(bool value)
{
    if (update(this, m_linkPreviews, value, &AppSettings::linkPreviewsChanged))
        store(u"linkPreviews"_s, value, true);
}

void AppSettings::setCardShowLinkDescription(bool value)
{
    if (update(this, m_cardShowLinkDescription, value, &AppSettings::cardShowLinkDescriptionChanged))
        store(u"cardShowLinkDescription"_s, value, true);
}

void AppSettings::setGridColumns(double value)
{
    if (update(this, m_gridColumns, value, &AppSettings::gridColumnsChanged))
        store(u"gridColumns"_s, value, true);
}

void AppSettings::setGridSpacing(double value)
{
    if (update(this, m_gridSpacing, value, &AppSettings::gridSpacingChanged))
        store(u"gridSpacing"_s, value, true);
}

void AppSettings::setLibraryBackgroundHex(const QString &value)
{
    if (update(this, m_libraryBackgroundHex, value, &AppSettings::libraryBackgroundHexChanged))
        store(u"libraryBackgroundHex"_s, value, true);
}

void AppSettings::setLibraryBackgroundRecents(const QStringList &value)
{
    if (update(this, m_libraryBackgroundRecents, value, &AppSettings::libraryBackgroundRecentsChanged))
        store(u"libraryBackgroundRecents"_s, value, false);
}

void AppSettings::setAllViewKinds(const QStringList &value)
{
    const QStringList accepted = validKinds(value);
    if (update(this, m_allViewKinds, accepted, &AppSettings::allViewKindsChanged))
        store(u"allViewKinds"_s, accepted, true);
}

void AppSettings::setDropPopupExcludedApps(const QStringList &value)
{
    if (update(this, m_dropPopupExcludedApps, value, &AppSettings::dropPopupExcludedAppsChanged))
        store(u"dropPopupExcludedApps"_s, value, false);
}

void AppSettings::setCollapsedInfoSections(const QStringList &value)
{
    if (update(this, m_collapsedInfoSections, value, &AppSettings::collapsedInfoSectionsChanged))
        store(u"collapsedInfoSections"_s, value, false);
}

void AppSettings::setDropRingBrowsersOnly(bool value)
{
    if (update(this, m_dropRingBrowsersOnly, value, &AppSettings::dropRingBrowsersOnlyChanged))
        store(u"dropRingBrowsersOnly"_s, value, false);
}

void AppSettings::setDropRingRequireModifier(bool value)
{
    if (update(this, m_dropRingRequireModifier, value, &AppSettings::dropRingRequireModifierChanged))
        store(u"dropRingRequireModifier"_s, value, false);
}

void AppSettings::setDropRingModifier(const QString &value)
{
    const QString accepted = validCase(u"DropRingModifier"_s, value, m_dropRingModifier);
    if (update(this, m_dropRingModifier, accepted, &AppSettings::dropRingModifierChanged))
        store(u"dropRingModifier"_s, accepted, false);
}

void AppSettings::setCollectionsSectionExpanded(bool value)
{
    if (update(this, m_collectionsSectionExpanded, value, &AppSettings::collectionsSectionExpandedChanged))
        store(u"collectionsSectionExpanded"_s, value, false);
}

void AppSettings::setTypesSectionExpanded(bool value)
{
    if (update(this, m_typesSectionExpanded, value, &AppSettings::typesSectionExpandedChanged))
        store(u"typesSectionExpanded"_s, value, false);
}

void AppSettings::setPinnedSectionExpanded(bool value)
{
    if (update(this, m_pinnedSectionExpanded, value, &AppSettings::pinnedSectionExpandedChanged))
        store(u"pinnedSectionExpanded"_s, value, false);
}

void AppSettings::setCollectionSort(const QString &value)
{
    const QString accepted = validCase(u"CollectionSort"_s, value, m_collectionSort);
    if (update(this, m_collectionSort, accepted, &AppSettings::collectionSortChanged))
        store(u"collectionSort"_s, accepted, false);
}

void AppSettings::setCollectionSortReversed(bool value)
{
    if (update(this, m_collectionSortReversed, value, &AppSettings::collectionSortReversedChanged))
        store(u"collectionSortReversed"_s, value, false);
}

void AppSettings::setItemSort(const QString &value)
{
    const QString accepted = validCase(u"ItemSort"_s, value, m_itemSort);
    if (update(this, m_itemSort, accepted, &AppSettings::itemSortChanged))
        store(u"itemSort"_s, accepted, true);
}

void AppSettings::setShelfEdgeTrigger(bool value)
{
    if (update(this, m_shelfEdgeTrigger, value, &AppSettings::shelfEdgeTriggerChanged))
        store(u"shelfEdgeTrigger"_s, value, false);
}

void AppSettings::setShelfEdgeGap(double value)
{
    if (update(this, m_shelfEdgeGap, value, &AppSettings::shelfEdgeGapChanged))
        store(u"shelfEdgeGap"_s, value, false);
}

void AppSettings::setShelfTopGap(double value)
{
    if (update(this, m_shelfTopGap, value, &AppSettings::shelfTopGapChanged))
        store(u"shelfTopGap"_s, value, false);
}

void AppSettings::setShelfBottomGap(double value)
{
    if (update(this, m_shelfBottomGap, value, &AppSettings::shelfBottomGapChanged))
        store(u"shelfBottomGap"_s, value, false);
}

void AppSettings::setShelfMotion(const QString &value)
{
    const QString accepted = validCase(u"ShelfMotion"_s, value, m_shelfMotion);
    if (update(this, m_shelfMotion, accepted, &AppSettings::shelfMotionChanged))
        store(u"shelfMotion"_s, accepted, false);
}

void AppSettings::setShelfPreviewSize(const QString &value)
{
    const QString accepted = validCase(u"ShelfPreviewSize"_s, value, m_shelfPreviewSize);
    if (update(this, m_shelfPreviewSize, accepted, &AppSettings::shelfPreviewSizeChanged))
        store(u"shelfPreviewSize"_s, accepted, false);
}

void AppSettings::setShelfEnabled(bool value)
{
    if (update(this, m_shelfEnabled, value, &AppSettings::shelfEnabledChanged))
        store(u"shelfEnabled"_s, value, false);
}

void AppSettings::setFullscreenStyle(const QString &value)
{
    const QString accepted = validCase(u"FullscreenStyle"_s, value, m_fullscreenStyle);
    if (update(this, m_fullscreenStyle, accepted, &AppSettings::fullscreenStyleChanged))
        store(u"fullscreenStyle"_s, accepted, false);
}

void AppSettings::setClipperKey(const QString &value)
{
    if (update(this, m_clipperKey, value, &AppSettings::clipperKeyChanged))
        store(u"clipperKey"_s, value, false);
}

void AppSettings::setClipperShift(bool value)
{
    if (update(this, m_clipperShift, value, &AppSettings::clipperShiftChanged))
        store(u"clipperShift"_s, value, false);
}

void AppSettings::setClipperAlt(bool value)
{
    if (update(this, m_clipperAlt, value, &AppSettings::clipperAltChanged))
        store(u"clipperAlt"_s, value, false);
}

void AppSettings::setClipperCtrl(bool value)
{
    if (update(this, m_clipperCtrl, value, &AppSettings::clipperCtrlChanged))
        store(u"clipperCtrl"_s, value, false);
}

void AppSettings::setClipperMeta(bool value)
{
    if (update(this, m_clipperMeta, value, &AppSettings::clipperMetaChanged))
        store(u"clipperMeta"_s, value, false);
}

void AppSettings::setClipperOptionHold(bool value)
{
    if (update(this, m_clipperOptionHold, value, &AppSettings::clipperOptionHoldChanged))
        store(u"clipperOptionHold"_s, value, false);
}

void AppSettings::setScreenshotHotkeyKeyCode(int value)
{
    if (update(this, m_screenshotHotkeyKeyCode, value, &AppSettings::screenshotHotkeyKeyCodeChanged))
        store(u"screenshotHotkeyKeyCode"_s, value, false);
}

void AppSettings::setScreenshotHotkeyModifiers(int value)
{
    if (update(this, m_screenshotHotkeyModifiers, value, &AppSettings::screenshotHotkeyModifiersChanged))
        store(u"screenshotHotkeyModifiers"_s, value, false);
}

void AppSettings::setShelfHotkeyKeyCode(int value)
{
    if (update(this, m_shelfHotkeyKeyCode, value, &AppSettings::shelfHotkeyKeyCodeChanged))
        store(u"shelfHotkeyKeyCode"_s, value, false);
}

void AppSettings::setShelfHotkeyModifiers(int value)
{
    if (update(this, m_shelfHotkeyModifiers, value, &AppSettings::shelfHotkeyModifiersChanged))
        store(u"shelfHotkeyModifiers"_s, value, false);
}

void AppSettings::setShelfPinHotkeyKeyCode(int value)
{
    if (update(this, m_shelfPinHotkeyKeyCode, value, &AppSettings::shelfPinHotkeyKeyCodeChanged))
        store(u"shelfPinHotkeyKeyCode"_s, value, false);
}

void AppSettings::setShelfPinHotkeyModifiers(int value)
{
    if (update(this, m_shelfPinHotkeyModifiers, value, &AppSettings::shelfPinHotkeyModifiersChanged))
        store(u"shelfPinHotkeyModifiers"_s, value, false);
}

void AppSettings::setSavePageHotkeyKeyCode(int value)
{
    if (update(this, m_savePageHotkeyKeyCode, value, &AppSettings::savePageHotkeyKeyCodeChanged))
        store(u"savePageHotkeyKeyCode"_s, value, false);
}

void AppSettings::setSavePageHotkeyModifiers(int value)
{
    if (update(this, m_savePageHotkeyModifiers, value, &AppSettings::savePageHotkeyModifiersChanged))
        store(u"savePageHotkeyModifiers"_s, value, false);
}

void AppSettings::setLauncherHotkeyKeyCode(int value)
{
    if (update(this, m_launcherHotkeyKeyCode, value, &AppSettings::launcherHotkeyKeyCodeChanged))
        store(u"launcherHotkeyKeyCode"_s, value, false);
}

void AppSettings::setLauncherHotkeyModifiers(int value)
{
    if (update(this, m_launcherHotkeyModifiers, value, &AppSettings::launcherHotkeyModifiersChanged))
        store(u"launcherHotkeyModifiers"_s, value, false);
}

void AppSettings::setVisionHotkeyKeyCode(int value)
{
    if (update(this, m_visionHotkeyKeyCode, value, &AppSettings::visionHotkeyKeyCodeChanged))
        store(u"visionHotkeyKeyCode"_s, value, false);
}

void AppSettings::setVisionHotkeyModifiers(int value)
{
    if (update(this, m_visionHotkeyModifiers, value, &AppSettings::visionHotkeyModifiersChanged))
        store(u"visionHotkeyModifiers"_s, value, false);
}

void AppSettings::setLastFiledCollectionId(const QString &value)
{
    if (update(this, m_lastFiledCollectionId, value, &AppSettings::lastFiledCollectionIdChanged))
        store(u"lastFiledCollectionId"_s, value.isEmpty() ? QVariant() : QVariant(value), false);
}

void AppSettings::setCaptureCardEnabled(bool value)
{
    if (update(this, m_captureCardEnabled, value, &AppSettings::captureCardEnabledChanged))
        store(u"captureCardEnabled"_s, value, false);
}

void AppSettings::setCaptureDestination(const QString &value)
{
    const QString accepted = validCase(u"CaptureDestination"_s, value, m_captureDestination);
    if (update(this, m_captureDestination, accepted, &AppSettings::captureDestinationChanged))
        store(u"captureDestination"_s, accepted, false);
}

void AppSettings::setXBookmarkSyncEnabled(bool value)
{
    if (update(this, m_xBookmarkSyncEnabled, value, &AppSettings::xBookmarkSyncEnabledChanged))
        store(u"xBookmarkSyncEnabled"_s, value, false);
}

void AppSettings::setSidebarSolidity(double value)
{
    const double accepted = unitClamp(value);
    if (update(this, m_sidebarSolidity, accepted, &AppSettings::sidebarSolidityChanged))
        store(u"sidebarSolidity"_s, accepted, false);
}

void AppSettings::setRimSolidity(double value)
{
    const double accepted = unitClamp(value);
    if (update(this, m_rimSolidity, accepted, &AppSettings::rimSolidityChanged))
        m_rimSaveTask.start();
}

void AppSettings::setPlayCaptureSound(bool value)
{
    if (update(this, m_playCaptureSound, value, &AppSettings::playCaptureSoundChanged))
        store(u"playCaptureSound"_s, value, false);
}

void AppSettings::setCaptureSoundVolume(double value)
{
    if (update(this, m_captureSoundVolume, value, &AppSettings::captureSoundVolumeChanged))
        store(u"captureSoundVolume"_s, value, false);
}

void AppSettings::setCaptureSoundName(const QString &value)
{
    if (update(this, m_captureSoundName, value, &AppSettings::captureSoundNameChanged))
        store(u"captureSoundName"_s, value, false);
}

void AppSettings::setCloudPromptConsented(bool value)
{
    if (update(this, m_cloudPromptConsented, value, &AppSettings::cloudPromptConsentedChanged))
        store(u"cloudPromptConsented"_s, value, false);
}

void AppSettings::setClaudeAutoTags(bool value)
{
    if (update(this, m_claudeAutoTags, value, &AppSettings::claudeAutoTagsChanged))
        store(u"claudeAutoTags"_s, value, false);
}

void AppSettings::setClaudeSmartSearch(bool value)
{
    if (update(this, m_claudeSmartSearch, value, &AppSettings::claudeSmartSearchChanged))
        store(u"claudeSmartSearch"_s, value, false);
}

void AppSettings::setBackupDestination(const QString &value)
{
    if (update(this, m_backupDestination, value, &AppSettings::backupDestinationChanged))
        store(u"backupDestination"_s, value, false);
}

void AppSettings::setDownloadsFolder(const QString &value)
{
    if (update(this, m_downloadsFolder, value, &AppSettings::downloadsFolderChanged))
        store(u"downloadsFolder"_s, value, false);
}

void AppSettings::setBackupSchedule(const QString &value)
{
    const QString accepted = validCase(u"BackupSchedule"_s, value, m_backupSchedule);
    if (update(this, m_backupSchedule, accepted, &AppSettings::backupScheduleChanged))
        store(u"backupSchedule"_s, accepted, false);
}

void AppSettings::setBackupKeepVersions(int value)
{
    if (update(this, m_backupKeepVersions, value, &AppSettings::backupKeepVersionsChanged))
        store(u"backupKeepVersions"_s, value, false);
}

void AppSettings::setLastBackupAt(double value)
{
    if (update(this, m_lastBackupAt, value, &AppSettings::lastBackupAtChanged))
        store(u"lastBackupAt"_s, value, false);
}

void AppSettings::setBackupAtFixedTime(bool value)
{
    if (update(this, m_backupAtFixedTime, value, &AppSettings::backupAtFixedTimeChanged))
        store(u"backupAtFixedTime"_s, value, false);
}

void AppSettings::setBackupHour(int value)
{
    if (update(this, m_backupHour, value, &AppSettings::backupHourChanged))
        store(u"backupHour"_s, value, false);
}

} // namespace kivo
