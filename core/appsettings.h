#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

namespace kivo {

/**
 * The one settings model: each property mirrors a key of the user defaults, read once at creation
 * and written back when it changes. Enumerations are kept as their raw strings; a stored string
 * that is not a known case reads as the default. Preferences marked "per view" are kept once per
 * selection key ("gridColumns.all") with the plain key as their fallback.
 */
class AppSettings : public QObject
{
    Q_OBJECT

    Q_PROPERTY(QString appearance READ appearance WRITE setAppearance NOTIFY appearanceChanged)
    Q_PROPERTY(QString cardShape READ cardShape WRITE setCardShape NOTIFY cardShapeChanged)
    Q_PROPERTY(QString listRowStyle READ listRowStyle WRITE setListRowStyle NOTIFY listRowStyleChanged)
    Q_PROPERTY(double sidebarWidth READ sidebarWidth WRITE setSidebarWidth NOTIFY sidebarWidthChanged)
    Q_PROPERTY(bool sidebarVisible READ sidebarVisible WRITE setSidebarVisible NOTIFY sidebarVisibleChanged)
    Q_PROPERTY(int sidebarToggleKeyCode READ sidebarToggleKeyCode WRITE setSidebarToggleKeyCode NOTIFY sidebarToggleKeyCodeChanged)
    Q_PROPERTY(int sidebarToggleModifiers READ sidebarToggleModifiers WRITE setSidebarToggleModifiers NOTIFY sidebarToggleModifiersChanged)
    Q_PROPERTY(bool showSidebarCounts READ showSidebarCounts WRITE setShowSidebarCounts NOTIFY showSidebarCountsChanged)
    Q_PROPERTY(bool cardShowTitle READ cardShowTitle WRITE setCardShowTitle NOTIFY cardShowTitleChanged)
    Q_PROPERTY(bool cardShowTags READ cardShowTags WRITE setCardShowTags NOTIFY cardShowTagsChanged)
    Q_PROPERTY(bool listShowDomain READ listShowDomain WRITE setListShowDomain NOTIFY listShowDomainChanged)
    Q_PROPERTY(bool listShowDate READ listShowDate WRITE setListShowDate NOTIFY listShowDateChanged)
    Q_PROPERTY(bool listShowTags READ listShowTags WRITE setListShowTags NOTIFY listShowTagsChanged)
    Q_PROPERTY(bool listShowSize READ listShowSize WRITE setListShowSize NOTIFY listShowSizeChanged)
    Q_PROPERTY(bool linkPreviews READ linkPreviews WRITE setLinkPreviews NOTIFY linkPreviewsChanged)
    Q_PROPERTY(bool cardShowLinkDescription READ cardShowLinkDescription WRITE setCardShowLinkDescription NOTIFY cardShowLinkDescriptionChanged)
    Q_PROPERTY(double gridColumns READ gridColumns WRITE setGridColumns NOTIFY gridColumnsChanged)
    Q_PROPERTY(double gridSpacing READ gridSpacing WRITE setGridSpacing NOTIFY gridSpacingChanged)
    Q_PROPERTY(QString libraryBackgroundHex READ libraryBackgroundHex WRITE setLibraryBackgroundHex NOTIFY libraryBackgroundHexChanged)
    Q_PROPERTY(QStringList libraryBackgroundRecents READ libraryBackgroundRecents WRITE setLibraryBackgroundRecents NOTIFY libraryBackgroundRecentsChanged)
    Q_PROPERTY(QStringList allViewKinds READ allViewKinds WRITE setAllViewKinds NOTIFY allViewKindsChanged)
    Q_PROPERTY(QStringList dropPopupExcludedApps READ dropPopupExcludedApps WRITE setDropPopupExcludedApps NOTIFY dropPopupExcludedAppsChanged)
    Q_PROPERTY(QStringList collapsedInfoSections READ collapsedInfoSections WRITE setCollapsedInfoSections NOTIFY collapsedInfoSectionsChanged)
    Q_PROPERTY(bool dropRingBrowsersOnly READ dropRingBrowsersOnly WRITE setDropRingBrowsersOnly NOTIFY dropRingBrowsersOnlyChanged)
    Q_PROPERTY(bool dropRingRequireModifier READ dropRingRequireModifier WRITE setDropRingRequireModifier NOTIFY dropRingRequireModifierChanged)
    Q_PROPERTY(QString dropRingModifier READ dropRingModifier WRITE setDropRingModifier NOTIFY dropRingModifierChanged)
    Q_PROPERTY(bool collectionsSectionExpanded READ collectionsSectionExpanded WRITE setCollectionsSectionExpanded NOTIFY collectionsSectionExpandedChanged)
    Q_PROPERTY(bool typesSectionExpanded READ typesSectionExpanded WRITE setTypesSectionExpanded NOTIFY typesSectionExpandedChanged)
    Q_PROPERTY(bool pinnedSectionExpanded READ pinnedSectionExpanded WRITE setPinnedSectionExpanded NOTIFY pinnedSectionExpandedChanged)
    Q_PROPERTY(QString collectionSort READ collectionSort WRITE setCollectionSort NOTIFY collectionSortChanged)
    Q_PROPERTY(bool collectionSortReversed READ collectionSortReversed WRITE setCollectionSortReversed NOTIFY collectionSortReversedChanged)
    Q_PROPERTY(QString itemSort READ itemSort WRITE setItemSort NOTIFY itemSortChanged)
    Q_PROPERTY(bool shelfEdgeTrigger READ shelfEdgeTrigger WRITE setShelfEdgeTrigger NOTIFY shelfEdgeTriggerChanged)
    Q_PROPERTY(double shelfEdgeGap READ shelfEdgeGap WRITE setShelfEdgeGap NOTIFY shelfEdgeGapChanged)
    Q_PROPERTY(double shelfTopGap READ shelfTopGap WRITE setShelfTopGap NOTIFY shelfTopGapChanged)
    Q_PROPERTY(double shelfBottomGap READ shelfBottomGap WRITE setShelfBottomGap NOTIFY shelfBottomGapChanged)
    Q_PROPERTY(QString shelfMotion READ shelfMotion WRITE setShelfMotion NOTIFY shelfMotionChanged)
    Q_PROPERTY(QString shelfPreviewSize READ shelfPreviewSize WRITE setShelfPreviewSize NOTIFY shelfPreviewSizeChanged)
    Q_PROPERTY(bool shelfEnabled READ shelfEnabled WRITE setShelfEnabled NOTIFY shelfEnabledChanged)
    Q_PROPERTY(QString fullscreenStyle READ fullscreenStyle WRITE setFullscreenStyle NOTIFY fullscreenStyleChanged)
    Q_PROPERTY(QString clipperKey READ clipperKey WRITE setClipperKey NOTIFY clipperKeyChanged)
    Q_PROPERTY(bool clipperShift READ clipperShift WRITE setClipperShift NOTIFY clipperShiftChanged)
    Q_PROPERTY(bool clipperAlt READ clipperAlt WRITE setClipperAlt NOTIFY clipperAltChanged)
    Q_PROPERTY(bool clipperCtrl READ clipperCtrl WRITE setClipperCtrl NOTIFY clipperCtrlChanged)
    Q_PROPERTY(bool clipperMeta READ clipperMeta WRITE setClipperMeta NOTIFY clipperMetaChanged)
    Q_PROPERTY(bool clipperOptionHold READ clipperOptionHold WRITE setClipperOptionHold NOTIFY clipperOptionHoldChanged)
    Q_PROPERTY(int screenshotHotkeyKeyCode READ screenshotHotkeyKeyCode WRITE setScreenshotHotkeyKeyCode NOTIFY screenshotHotkeyKeyCodeChanged)
    Q_PROPERTY(int screenshotHotkeyModifiers READ screenshotHotkeyModifiers WRITE setScreenshotHotkeyModifiers NOTIFY screenshotHotkeyModifiersChanged)
    Q_PROPERTY(int shelfHotkeyKeyCode READ shelfHotkeyKeyCode WRITE setShelfHotkeyKeyCode NOTIFY shelfHotkeyKeyCodeChanged)
    Q_PROPERTY(int shelfHotkeyModifiers READ shelfHotkeyModifiers WRITE setShelfHotkeyModifiers NOTIFY shelfHotkeyModifiersChanged)
    Q_PROPERTY(int shelfPinHotkeyKeyCode READ shelfPinHotkeyKeyCode WRITE setShelfPinHotkeyKeyCode NOTIFY shelfPinHotkeyKeyCodeChanged)
    Q_PROPERTY(int shelfPinHotkeyModifiers READ shelfPinHotkeyModifiers WRITE setShelfPinHotkeyModifiers NOTIFY shelfPinHotkeyModifiersChanged)
    Q_PROPERTY(int savePageHotkeyKeyCode READ savePageHotkeyKeyCode WRITE setSavePageHotkeyKeyCode NOTIFY savePageHotkeyKeyCodeChanged)
    Q_PROPERTY(int savePageHotkeyModifiers READ savePageHotkeyModifiers WRITE setSavePageHotkeyModifiers NOTIFY savePageHotkeyModifiersChanged)
    Q_PROPERTY(int launcherHotkeyKeyCode READ launcherHotkeyKeyCode WRITE setLauncherHotkeyKeyCode NOTIFY launcherHotkeyKeyCodeChanged)
    Q_PROPERTY(int launcherHotkeyModifiers READ launcherHotkeyModifiers WRITE setLauncherHotkeyModifiers NOTIFY launcherHotkeyModifiersChanged)
    Q_PROPERTY(int visionHotkeyKeyCode READ visionHotkeyKeyCode WRITE setVisionHotkeyKeyCode NOTIFY visionHotkeyKeyCodeChanged)
    Q_PROPERTY(int visionHotkeyModifiers READ visionHotkeyModifiers WRITE setVisionHotkeyModifiers NOTIFY visionHotkeyModifiersChanged)
    Q_PROPERTY(QString lastFiledCollectionId READ lastFiledCollectionId WRITE setLastFiledCollectionId NOTIFY lastFiledCollectionIdChanged)
    Q_PROPERTY(bool captureCardEnabled READ captureCardEnabled WRITE setCaptureCardEnabled NOTIFY captureCardEnabledChanged)
    Q_PROPERTY(QString captureDestination READ captureDestination WRITE setCaptureDestination NOTIFY captureDestinationChanged)
    Q_PROPERTY(bool xBookmarkSyncEnabled READ xBookmarkSyncEnabled WRITE setXBookmarkSyncEnabled NOTIFY xBookmarkSyncEnabledChanged)
    Q_PROPERTY(double sidebarSolidity READ sidebarSolidity WRITE setSidebarSolidity NOTIFY sidebarSolidityChanged)
    Q_PROPERTY(double rimSolidity READ rimSolidity WRITE setRimSolidity NOTIFY rimSolidityChanged)
    Q_PROPERTY(bool playCaptureSound READ playCaptureSound WRITE setPlayCaptureSound NOTIFY playCaptureSoundChanged)
    Q_PROPERTY(double captureSoundVolume READ captureSoundVolume WRITE setCaptureSoundVolume NOTIFY captureSoundVolumeChanged)
    Q_PROPERTY(QString captureSoundName READ captureSoundName WRITE setCaptureSoundName NOTIFY captureSoundNameChanged)
    Q_PROPERTY(bool cloudPromptConsented READ cloudPromptConsented WRITE setCloudPromptConsented NOTIFY cloudPromptConsentedChanged)
    Q_PROPERTY(bool claudeAutoTags READ claudeAutoTags WRITE setClaudeAutoTags NOTIFY claudeAutoTagsChanged)
    Q_PROPERTY(bool claudeSmartSearch READ claudeSmartSearch WRITE setClaudeSmartSearch NOTIFY claudeSmartSearchChanged)
    Q_PROPERTY(QString backupDestination READ backupDestination WRITE setBackupDestination NOTIFY backupDestinationChanged)
    Q_PROPERTY(QString downloadsFolder READ downloadsFolder WRITE setDownloadsFolder NOTIFY downloadsFolderChanged)
    Q_PROPERTY(QString backupSchedule READ backupSchedule WRITE setBackupSchedule NOTIFY backupScheduleChanged)
    Q_PROPERTY(int backupKeepVersions READ backupKeepVersions WRITE setBackupKeepVersions NOTIFY backupKeepVersionsChanged)
    Q_PROPERTY(double lastBackupAt READ lastBackupAt WRITE setLastBackupAt NOTIFY lastBackupAtChanged)
    Q_PROPERTY(bool backupAtFixedTime READ backupAtFixedTime WRITE setBackupAtFixedTime NOTIFY backupAtFixedTimeChanged)
    Q_PROPERTY(int backupHour READ backupHour WRITE setBackupHour NOTIFY backupHourChanged)
    Q_PROPERTY(bool cloudPromptKeySet READ cloudPromptKeySet WRITE setCloudPromptKeySet NOTIFY cloudPromptKeySetChanged)
    Q_PROPERTY(QString currentViewKey READ currentViewKey NOTIFY currentViewKeyChanged)

public:
    explicit AppSettings(QObject *parent = nullptr);
    ~AppSettings() override;

    /** The raw strings of an enumeration, in declaration order; the first is the usual fallback. */
    [[nodiscard]] static QStringList enumerationCases(const QString &enumeration);

    /** Loads the per-view preferences of a selection key, without writing anything back. */
    Q_INVOKABLE void loadViewPreferences(const QString &viewKey);
    [[nodiscard]] QString currentViewKey() const { return m_currentViewKey; }
    [[nodiscard]] bool loadingViewPrefs() const { return m_loadingViewPrefs; }
    /** Writes any delayed value at once (the rim solidity waits a moment before it is stored). */
    void flush();

    [[nodiscard]] bool cloudPromptKeySet() const { return m_cloudPromptKeySet; }
    void setCloudPromptKeySet(bool value);

    [[nodiscard]] QString appearance() const { return m_appearance; }
    void setAppearance(const QString &value);
    [[nodiscard]] QString cardShape() const { return m_cardShape; }
    void setCardShape(const QString &value);
    [[nodiscard]] QString listRowStyle() const { return m_listRowStyle; }
    void setListRowStyle(const QString &value);
    [[nodiscard]] double sidebarWidth() const { return m_sidebarWidth; }
    void setSidebarWidth(double value);
    [[nodiscard]] bool sidebarVisible() const { return m_sidebarVisible; }
    void setSidebarVisible(bool value);
    [[nodiscard]] int sidebarToggleKeyCode() const { return m_sidebarToggleKeyCode; }
    void setSidebarToggleKeyCode(int value);
    [[nodiscard]] int sidebarToggleModifiers() const { return m_sidebarToggleModifiers; }
    void setSidebarToggleModifiers(int value);
    [[nodiscard]] bool showSidebarCounts() const { return m_showSidebarCounts; }
    void setShowSidebarCounts(bool value);
    [[nodiscard]] bool cardShowTitle() const { return m_cardShowTitle; }
    void setCardShowTitle(bool value);
    [[nodiscard]] bool cardShowTags() const { return m_cardShowTags; }
    void setCardShowTags(bool value);
    [[nodiscard]] bool listShowDomain() const { return m_listShowDomain; }
    void setListShowDomain(bool value);
    [[nodiscard]] bool listShowDate() const { return m_listShowDate; }
    void setListShowDate(bool value);
    [[nodiscard]] bool listShowTags() const { return m_listShowTags; }
    void setListShowTags(bool value);
    [[nodiscard]] bool listShowSize() const { return m_listShowSize; }
    void setListShowSize(bool value);
    [[nodiscard]] bool linkPreviews() const { return m_linkPreviews; }
    void setLinkPreviews(bool value);
    [[nodiscard]] bool cardShowLinkDescription() const { return m_cardShowLinkDescription; }
    void setCardShowLinkDescription(bool value);
    [[nodiscard]] double gridColumns() const { return m_gridColumns; }
    void setGridColumns(double value);
    [[nodiscard]] double gridSpacing() const { return m_gridSpacing; }
    void setGridSpacing(double value);
    [[nodiscard]] QString libraryBackgroundHex() const { return m_libraryBackgroundHex; }
    void setLibraryBackgroundHex(const QString &value);
    [[nodiscard]] QStringList libraryBackgroundRecents() const { return m_libraryBackgroundRecents; }
    void setLibraryBackgroundRecents(const QStringList &value);
    [[nodiscard]] QStringList allViewKinds() const { return m_allViewKinds; }
    void setAllViewKinds(const QStringList &value);
    [[nodiscard]] QStringList dropPopupExcludedApps() const { return m_dropPopupExcludedApps; }
    void setDropPopupExcludedApps(const QStringList &value);
    [[nodiscard]] QStringList collapsedInfoSections() const { return m_collapsedInfoSections; }
    void setCollapsedInfoSections(const QStringList &value);
    [[nodiscard]] bool dropRingBrowsersOnly() const { return m_dropRingBrowsersOnly; }
    void setDropRingBrowsersOnly(bool value);
    [[nodiscard]] bool dropRingRequireModifier() const { return m_dropRingRequireModifier; }
    void setDropRingRequireModifier(bool value);
    [[nodiscard]] QString dropRingModifier() const { return m_dropRingModifier; }
    void setDropRingModifier(const QString &value);
    [[nodiscard]] bool collectionsSectionExpanded() const { return m_collectionsSectionExpanded; }
    void setCollectionsSectionExpanded(bool value);
    [[nodiscard]] bool typesSectionExpanded() const { return m_typesSectionExpanded; }
    void setTypesSectionExpanded(bool value);
    [[nodiscard]] bool pinnedSectionExpanded() const { return m_pinnedSectionExpanded; }
    void setPinnedSectionExpanded(bool value);
    [[nodiscard]] QString collectionSort() const { return m_collectionSort; }
    void setCollectionSort(const QString &value);
    [[nodiscard]] bool collectionSortReversed() const { return m_collectionSortReversed; }
    void setCollectionSortReversed(bool value);
    [[nodiscard]] QString itemSort() const { return m_itemSort; }
    /** The item sort the view with this key would load, without loading it. */
    [[nodiscard]] QString itemSortFor(const QString &viewKey) const;
    void setItemSort(const QString &value);
    [[nodiscard]] bool shelfEdgeTrigger() const { return m_shelfEdgeTrigger; }
    void setShelfEdgeTrigger(bool value);
    [[nodiscard]] double shelfEdgeGap() const { return m_shelfEdgeGap; }
    void setShelfEdgeGap(double value);
    [[nodiscard]] double shelfTopGap() const { return m_shelfTopGap; }
    void setShelfTopGap(double value);
    [[nodiscard]] double shelfBottomGap() const { return m_shelfBottomGap; }
    void setShelfBottomGap(double value);
    [[nodiscard]] QString shelfMotion() const { return m_shelfMotion; }
    void setShelfMotion(const QString &value);
    [[nodiscard]] QString shelfPreviewSize() const { return m_shelfPreviewSize; }
    void setShelfPreviewSize(const QString &value);
    [[nodiscard]] bool shelfEnabled() const { return m_shelfEnabled; }
    void setShelfEnabled(bool value);
    [[nodiscard]] QString fullscreenStyle() const { return m_fullscreenStyle; }
    void setFullscreenStyle(const QString &value);
    [[nodiscard]] QString clipperKey() const { return m_clipperKey; }
    void setClipperKey(const QString &value);
    [[nodiscard]] bool clipperShift() const { return m_clipperShift; }
    void setClipperShift(bool value);
    [[nodiscard]] bool clipperAlt() const { return m_clipperAlt; }
    void setClipperAlt(bool value);
    [[nodiscard]] bool clipperCtrl() const { return m_clipperCtrl; }
    void setClipperCtrl(bool value);
    [[nodiscard]] bool clipperMeta() const { return m_clipperMeta; }
    void setClipperMeta(bool value);
    [[nodiscard]] bool clipperOptionHold() const { return m_clipperOptionHold; }
    void setClipperOptionHold(bool value);
    [[nodiscard]] int screenshotHotkeyKeyCode() const { return m_screenshotHotkeyKeyCode; }
    void setScreenshotHotkeyKeyCode(int value);
    [[nodiscard]] int screenshotHotkeyModifiers() const { return m_screenshotHotkeyModifiers; }
    void setScreenshotHotkeyModifiers(int value);
    [[nodiscard]] int shelfHotkeyKeyCode() const { return m_shelfHotkeyKeyCode; }
    void setShelfHotkeyKeyCode(int value);
    [[nodiscard]] int shelfHotkeyModifiers() const { return m_shelfHotkeyModifiers; }
    void setShelfHotkeyModifiers(int value);
    [[nodiscard]] int shelfPinHotkeyKeyCode() const { return m_shelfPinHotkeyKeyCode; }
    void setShelfPinHotkeyKeyCode(int value);
    [[nodiscard]] int shelfPinHotkeyModifiers() const { return m_shelfPinHotkeyModifiers; }
    void setShelfPinHotkeyModifiers(int value);
    [[nodiscard]] int savePageHotkeyKeyCode() const { return m_savePageHotkeyKeyCode; }
    void setSavePageHotkeyKeyCode(int value);
    [[nodiscard]] int savePageHotkeyModifiers() const { return m_savePageHotkeyModifiers; }
    void setSavePageHotkeyModifiers(int value);
    [[nodiscard]] int launcherHotkeyKeyCode() const { return m_launcherHotkeyKeyCode; }
    void setLauncherHotkeyKeyCode(int value);
    [[nodiscard]] int launcherHotkeyModifiers() const { return m_launcherHotkeyModifiers; }
    void setLauncherHotkeyModifiers(int value);
    [[nodiscard]] int visionHotkeyKeyCode() const { return m_visionHotkeyKeyCode; }
    void setVisionHotkeyKeyCode(int value);
    [[nodiscard]] int visionHotkeyModifiers() const { return m_visionHotkeyModifiers; }
    void setVisionHotkeyModifiers(int value);
    [[nodiscard]] QString lastFiledCollectionId() const { return m_lastFiledCollectionId; }
    void setLastFiledCollectionId(const QString &value);
    [[nodiscard]] bool captureCardEnabled() const { return m_captureCardEnabled; }
    void setCaptureCardEnabled(bool value);
    [[nodiscard]] QString captureDestination() const { return m_captureDestination; }
    void setCaptureDestination(const QString &value);
    [[nodiscard]] bool xBookmarkSyncEnabled() const { return m_xBookmarkSyncEnabled; }
    void setXBookmarkSyncEnabled(bool value);
    [[nodiscard]] double sidebarSolidity() const { return m_sidebarSolidity; }
    void setSidebarSolidity(double value);
    [[nodiscard]] double rimSolidity() const { return m_rimSolidity; }
    void setRimSolidity(double value);
    [[nodiscard]] bool playCaptureSound() const { return m_playCaptureSound; }
    void setPlayCaptureSound(bool value);
    [[nodiscard]] double captureSoundVolume() const { return m_captureSoundVolume; }
    void setCaptureSoundVolume(double value);
    [[nodiscard]] QString captureSoundName() const { return m_captureSoundName; }
    void setCaptureSoundName(const QString &value);
    [[nodiscard]] bool cloudPromptConsented() const { return m_cloudPromptConsented; }
    void setCloudPromptConsented(bool value);
    [[nodiscard]] bool claudeAutoTags() const { return m_claudeAutoTags; }
    void setClaudeAutoTags(bool value);
    [[nodiscard]] bool claudeSmartSearch() const { return m_claudeSmartSearch; }
    void setClaudeSmartSearch(bool value);
    [[nodiscard]] QString backupDestination() const { return m_backupDestination; }
    void setBackupDestination(const QString &value);
    [[nodiscard]] QString downloadsFolder() const { return m_downloadsFolder; }
    void setDownloadsFolder(const QString &value);
    [[nodiscard]] QString backupSchedule() const { return m_backupSchedule; }
    void setBackupSchedule(const QString &value);
    [[nodiscard]] int backupKeepVersions() const { return m_backupKeepVersions; }
    void setBackupKeepVersions(int value);
    [[nodiscard]] double lastBackupAt() const { return m_lastBackupAt; }
    void setLastBackupAt(double value);
    [[nodiscard]] bool backupAtFixedTime() const { return m_backupAtFixedTime; }
    void setBackupAtFixedTime(bool value);
    [[nodiscard]] int backupHour() const { return m_backupHour; }
    void setBackupHour(int value);

Q_SIGNALS:
    void cloudPromptKeySetChanged();
    void currentViewKeyChanged();
    void appearanceChanged();
    void cardShapeChanged();
    void listRowStyleChanged();
    void sidebarWidthChanged();
    void sidebarVisibleChanged();
    void sidebarToggleKeyCodeChanged();
    void sidebarToggleModifiersChanged();
    void showSidebarCountsChanged();
    void cardShowTitleChanged();
    void cardShowTagsChanged();
    void listShowDomainChanged();
    void listShowDateChanged();
    void listShowTagsChanged();
    void listShowSizeChanged();
    void linkPreviewsChanged();
    void cardShowLinkDescriptionChanged();
    void gridColumnsChanged();
    void gridSpacingChanged();
    void libraryBackgroundHexChanged();
    void libraryBackgroundRecentsChanged();
    void allViewKindsChanged();
    void dropPopupExcludedAppsChanged();
    void collapsedInfoSectionsChanged();
    void dropRingBrowsersOnlyChanged();
    void dropRingRequireModifierChanged();
    void dropRingModifierChanged();
    void collectionsSectionExpandedChanged();
    void typesSectionExpandedChanged();
    void pinnedSectionExpandedChanged();
    void collectionSortChanged();
    void collectionSortReversedChanged();
    void itemSortChanged();
    void shelfEdgeTriggerChanged();
    void shelfEdgeGapChanged();
    void shelfTopGapChanged();
    void shelfBottomGapChanged();
    void shelfMotionChanged();
    void shelfPreviewSizeChanged();
    void shelfEnabledChanged();
    void fullscreenStyleChanged();
    void clipperKeyChanged();
    void clipperShiftChanged();
    void clipperAltChanged();
    void clipperCtrlChanged();
    void clipperMetaChanged();
    void clipperOptionHoldChanged();
    void screenshotHotkeyKeyCodeChanged();
    void screenshotHotkeyModifiersChanged();
    void shelfHotkeyKeyCodeChanged();
    void shelfHotkeyModifiersChanged();
    void shelfPinHotkeyKeyCodeChanged();
    void shelfPinHotkeyModifiersChanged();
    void savePageHotkeyKeyCodeChanged();
    void savePageHotkeyModifiersChanged();
    void launcherHotkeyKeyCodeChanged();
    void launcherHotkeyModifiersChanged();
    void visionHotkeyKeyCodeChanged();
    void visionHotkeyModifiersChanged();
    void lastFiledCollectionIdChanged();
    void captureCardEnabledChanged();
    void captureDestinationChanged();
    void xBookmarkSyncEnabledChanged();
    void sidebarSolidityChanged();
    void rimSolidityChanged();
    void playCaptureSoundChanged();
    void captureSoundVolumeChanged();
    void captureSoundNameChanged();
    void cloudPromptConsentedChanged();
    void claudeAutoTagsChanged();
    void claudeSmartSearchChanged();
    void backupDestinationChanged();
    void downloadsFolderChanged();
    void backupScheduleChanged();
    void backupKeepVersionsChanged();
    void lastBackupAtChanged();
    void backupAtFixedTimeChanged();
    void backupHourChanged();

private:
    void applyOneTimeChanges();
    void loadGlobalKeys();
    void store(const QString &key, const QVariant &value, bool perView);

    QString m_currentViewKey = QStringLiteral("all");
    bool m_loadingViewPrefs = false;
    bool m_cloudPromptKeySet = false;
    QTimer m_rimSaveTask;
    QString m_appearance = QStringLiteral("system");
    QString m_cardShape = QStringLiteral("original");
    QString m_listRowStyle = QStringLiteral("oneLine");
    double m_sidebarWidth = 228.0;
    bool m_sidebarVisible = true;
    int m_sidebarToggleKeyCode = 1;
    int m_sidebarToggleModifiers = 4352;
    bool m_showSidebarCounts = true;
    bool m_cardShowTitle = false;
    bool m_cardShowTags = false;
    bool m_listShowDomain = true;
    bool m_listShowDate = false;
    bool m_listShowTags = false;
    bool m_listShowSize = false;
    bool m_linkPreviews = false;
    bool m_cardShowLinkDescription = false;
    double m_gridColumns = 4.0;
    double m_gridSpacing = 14.0;
    QString m_libraryBackgroundHex = QString();
    QStringList m_libraryBackgroundRecents = QStringList();
    QStringList m_allViewKinds = {QStringLiteral("image"), QStringLiteral("video"), QStringLiteral("link"), QStringLiteral("text"), QStringLiteral("file")};
    QStringList m_dropPopupExcludedApps = QStringList{QStringLiteral("flameshot")};
    QStringList m_collapsedInfoSections = QStringList();
    bool m_dropRingBrowsersOnly = false;
    bool m_dropRingRequireModifier = true;
    QString m_dropRingModifier = QStringLiteral("control");
    bool m_collectionsSectionExpanded = true;
    bool m_typesSectionExpanded = true;
    bool m_pinnedSectionExpanded = true;
    QString m_collectionSort = QStringLiteral("manual");
    bool m_collectionSortReversed = false;
    QString m_itemSort = QStringLiteral("newest");
    bool m_shelfEdgeTrigger = true;
    double m_shelfEdgeGap = 26.0;
    double m_shelfTopGap = 40.0;
    double m_shelfBottomGap = 40.0;
    QString m_shelfMotion = QStringLiteral("standard");
    QString m_shelfPreviewSize = QStringLiteral("medium");
    bool m_shelfEnabled = false;
    QString m_fullscreenStyle = QStringLiteral("wholeScreen");
    QString m_clipperKey = QString();
    bool m_clipperShift = false;
    bool m_clipperAlt = false;
    bool m_clipperCtrl = false;
    bool m_clipperMeta = false;
    bool m_clipperOptionHold = false;
    int m_screenshotHotkeyKeyCode = 1;
    int m_screenshotHotkeyModifiers = 768;
    int m_shelfHotkeyKeyCode = 46;
    int m_shelfHotkeyModifiers = 768;
    int m_shelfPinHotkeyKeyCode = 35;
    int m_shelfPinHotkeyModifiers = 768;
    int m_savePageHotkeyKeyCode = 11;
    int m_savePageHotkeyModifiers = 768;
    int m_launcherHotkeyKeyCode = 40;
    int m_launcherHotkeyModifiers = 768;
    int m_visionHotkeyKeyCode = 9;
    int m_visionHotkeyModifiers = 768;
    QString m_lastFiledCollectionId = QString();
    bool m_captureCardEnabled = true;
    QString m_captureDestination = QStringLiteral("inbox");
    bool m_xBookmarkSyncEnabled = false;
    double m_sidebarSolidity = 0.55;
    double m_rimSolidity = 0.0;
    bool m_playCaptureSound = true;
    double m_captureSoundVolume = 0.7;
    QString m_captureSoundName = QStringLiteral("Collect");
    bool m_cloudPromptConsented = false;
    bool m_claudeAutoTags = true;
    bool m_claudeSmartSearch = true;
    QString m_backupDestination = QString();
    QString m_downloadsFolder = QString();
    QString m_backupSchedule = QStringLiteral("off");
    int m_backupKeepVersions = 5;
    double m_lastBackupAt = 0.0;
    bool m_backupAtFixedTime = false;
    int m_backupHour = 3;
};

} // namespace kivo
