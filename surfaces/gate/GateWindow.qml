pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Window
import Kivo

// The window shown before anything else when the library that was opened before is missing:
// the alert, the folder chooser and the refusal, one at a time.
Window {
    id: window
    objectName: "gateWindow"

    required property LibraryGate gate

    readonly property Item current: gate.stage === LibraryGate.Choosing ? relocation
                                  : gate.stage === LibraryGate.Refused ? refusal : missing

    title: gate.stage === LibraryGate.Choosing ? gate.chooserTitle : "Kivo"
    flags: Qt.Dialog
    modality: Qt.ApplicationModal
    color: Theme.surface
    visible: gate.stage !== LibraryGate.Done
    width: current.implicitWidth
    height: current.implicitHeight
    minimumWidth: width
    maximumWidth: width
    minimumHeight: height
    maximumHeight: height

    // Closing the window answers like "Quit": nothing is made, and the start ends.
    onClosing: window.gate.quit()

    Component.onCompleted: {
        // An alert stands in the middle of the screen, in front of everything.
        window.x = Screen.virtualX + (Screen.width - window.width) / 2;
        window.y = Screen.virtualY + (Screen.height - window.height) / 3;
        window.raise();
        window.requestActivate();
        missing.focusFirstChoice();
    }

    AlertView {
        id: missing
        objectName: "missingAlert"
        anchors.fill: parent
        visible: window.current === missing
        title: window.gate.missingTitle
        message: window.gate.missingText
        choices: window.gate.choices
        onChosen: index => window.gate.answerAlert(index)
    }

    RelocationPanel {
        id: relocation
        objectName: "relocationPanel"
        anchors.fill: parent
        visible: window.current === relocation
        gate: window.gate
    }

    AlertView {
        id: refusal
        objectName: "refusalAlert"
        anchors.fill: parent
        visible: window.current === refusal
        glyph: "warning"
        glyphColor: Theme.warning
        title: window.gate.refusalTitle
        message: window.gate.refusalText
        choices: ["OK"]
        onChosen: window.gate.dismissRefusal()
        Keys.onEscapePressed: window.gate.dismissRefusal()
    }
}
