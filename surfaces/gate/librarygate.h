#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

namespace kivo {

/**
 * What the start does when a library that was opened before has gone: the alert with its three
 * choices, the folder chooser and its refusal. Nothing here creates a library; the only way to a
 * new one is the user's own "Start a New Library".
 */
class LibraryGate : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the start of the application")
    Q_PROPERTY(Stage stage READ stage NOTIFY stageChanged)
    Q_PROPERTY(Outcome outcome READ outcome NOTIFY finished)
    Q_PROPERTY(QString missingTitle READ missingTitle CONSTANT)
    Q_PROPERTY(QString missingText READ missingText CONSTANT)
    /** The alert's buttons, in the order shown. */
    Q_PROPERTY(QStringList choices READ choices CONSTANT)
    Q_PROPERTY(QString chooserTitle READ chooserTitle CONSTANT)
    Q_PROPERTY(QString chooserMessage READ chooserMessage CONSTANT)
    Q_PROPERTY(QString chooserPrompt READ chooserPrompt CONSTANT)
    /** Where the chooser starts: the folder that holds the library's expected place. */
    Q_PROPERTY(QString startFolder READ startFolder CONSTANT)
    Q_PROPERTY(QUrl startFolderUrl READ startFolderUrl CONSTANT)
    Q_PROPERTY(QString refusalTitle READ refusalTitle NOTIFY stageChanged)
    Q_PROPERTY(QString refusalText READ refusalText NOTIFY stageChanged)

public:
    enum class Stage {
        Missing, ///< the alert with its three choices
        Choosing, ///< the folder chooser
        Refused, ///< the chosen folder holds no library
        Done, ///< an outcome was reached
    };
    Q_ENUM(Stage)

    enum class Outcome {
        Undecided,
        Relocated, ///< a library folder was chosen and stored
        StartNew, ///< the user asked for a new library at the same place
        Quit, ///< the user asked to quit
    };
    Q_ENUM(Outcome)

    /** A gate for the library expected at `root`. */
    explicit LibraryGate(const QString &root, QObject *parent = nullptr);

    [[nodiscard]] Stage stage() const { return m_stage; }
    [[nodiscard]] Outcome outcome() const { return m_outcome; }
    [[nodiscard]] QString missingTitle() const;
    [[nodiscard]] QString missingText() const;
    [[nodiscard]] QStringList choices() const;
    [[nodiscard]] QString chooserTitle() const;
    [[nodiscard]] QString chooserMessage() const;
    [[nodiscard]] QString chooserPrompt() const;
    [[nodiscard]] QString startFolder() const;
    [[nodiscard]] QUrl startFolderUrl() const { return QUrl::fromLocalFile(startFolder()); }
    [[nodiscard]] QString refusalTitle() const { return m_refusalTitle; }
    [[nodiscard]] QString refusalText() const { return m_refusalText; }

    /** A press of the alert's button at `index` in `choices`. */
    Q_INVOKABLE void answerAlert(int index);
    /** "Choose Library…": opens the folder chooser. */
    Q_INVOKABLE void chooseLibrary();
    /** The chooser's accept with a folder typed or picked (a path, "~/…" or a file URL). */
    Q_INVOKABLE void choose(const QString &folder);
    /** The chooser was closed without a choice: back to the alert. */
    Q_INVOKABLE void cancelChoice();
    /** The refusal was read: back to the alert. */
    Q_INVOKABLE void dismissRefusal();
    /** "Quit". */
    Q_INVOKABLE void quit();
    /** "Start a New Library". */
    Q_INVOKABLE void startNewLibrary();

    /** A local path for the chooser's field from a URL the folder dialog gives. */
    Q_INVOKABLE QString pathFromUrl(const QUrl &url) const;

Q_SIGNALS:
    void stageChanged();
    void finished(kivo::LibraryGate::Outcome outcome);

private:
    void setStage(Stage stage);
    void finish(Outcome outcome);

    QString m_root;
    Stage m_stage = Stage::Missing;
    Outcome m_outcome = Outcome::Undecided;
    QString m_refusalTitle;
    QString m_refusalText;
};

} // namespace kivo
