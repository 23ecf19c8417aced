pragma Singleton
import QtQuick
import Kivo.Services

// Colours, spacing, radii, type and motion for every surface. Pictures carry the colour; the
// chrome stays quiet: warm neutrals, one calm accent, hairlines instead of boxes.
QtObject {
    id: theme

    // Follows the `appearance` setting and, for "system", the desktop.
    readonly property bool dark: Appearance ? Appearance.dark : false

    // Surfaces, from the back forwards.
    readonly property color window: dark ? "#161617" : "#fafaf8"
    readonly property color sidebar: dark ? "#1d1d1f" : "#f1f0ed"
    readonly property color surface: dark ? "#232325" : "#ffffff"
    readonly property color sunken: dark ? "#1a1a1c" : "#f4f3f0"
    readonly property color hairline: dark ? "#2e2e31" : "#e4e2dd"
    readonly property color scrim: dark ? "#99000000" : "#40000000"

    // Text.
    readonly property color text: dark ? "#ececee" : "#1c1c1e"
    readonly property color secondaryText: dark ? "#9a9aa0" : "#6b6b70"
    readonly property color tertiaryText: dark ? "#66666c" : "#a3a3a8"

    // Interaction.
    readonly property color accent: dark ? "#7b93ff" : "#3d5fd9"
    // Filled controls: deeper than the accent in the dark, so white text on them stays legible.
    readonly property color accentFill: dark ? "#4a63d8" : "#3d5fd9"
    readonly property color textOnAccent: "#ffffff"
    readonly property color hover: dark ? "#262629" : "#e9e8e4"
    readonly property color selection: dark ? "#2f2f33" : "#e2e0db"
    readonly property color pressed: dark ? "#38383d" : "#d8d6d0"
    readonly property color focusRing: dark ? "#8ea2ff" : "#3d5fd9"
    readonly property color focusRingSoft: dark ? "#998ea2ff" : "#993d5fd9"
    readonly property color control: dark ? "#2c2c2f" : "#ffffff"
    readonly property color controlBorder: dark ? "#3a3a3e" : "#d9d7d2"

    // Messages.
    readonly property color warning: dark ? "#ff9f8a" : "#b3402a"
    readonly property color warningFill: dark ? "#3a2420" : "#fbece8"

    readonly property string fontFamily: Qt.application.font.family

    readonly property QtObject space: QtObject {
        readonly property int xxs: 2
        readonly property int xs: 4
        readonly property int s: 8
        readonly property int m: 12
        readonly property int l: 16
        readonly property int xl: 24
        readonly property int xxl: 32
        readonly property int xxxl: 48
    }

    readonly property QtObject radius: QtObject {
        readonly property int s: 6
        readonly property int m: 8
        readonly property int l: 12
        readonly property int xl: 16
    }

    // Pixel sizes of the type scale, smallest first.
    readonly property QtObject type: QtObject {
        readonly property int caption: 11
        readonly property int footnote: 12
        readonly property int body: 13
        readonly property int callout: 14
        readonly property int headline: 15
        readonly property int title3: 17
        readonly property int title2: 20
        readonly property int title1: 26
    }

    // Durations in milliseconds; one easing for things that arrive, one for things that move.
    readonly property QtObject motion: QtObject {
        readonly property int quick: 120
        readonly property int standard: 200
        readonly property int gentle: 320
        readonly property int enter: Easing.OutCubic
        readonly property int move: Easing.InOutCubic
    }

    readonly property QtObject metrics: QtObject {
        readonly property int sidebarWidth: 228
        readonly property int headerHeight: 56
        readonly property int rowHeight: 30
        readonly property int glyph: 16
        readonly property int controlHeight: 32
    }
}
