#include "app/lifecycle/loginitem.h"

#include "core/systemlog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

// The Exec key's quoting: arguments with reserved characters go in double quotes, with the
// quote, backquote, dollar and backslash escaped.
QString quotedForExec(const QString &path)
{
    static const QString reserved = u" \t\n\"'\\><~|&;$*?#()`"_s;
    if (std::none_of(path.cbegin(), path.cend(), [](QChar c) { return reserved.contains(c); }))
        return path;
    QString escaped;
    for (const QChar c : path) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            escaped += u'\\';
        escaped += c;
    }
    return u'"' + escaped + u'"';
}

} // namespace

LoginItem::LoginItem(QObject *parent)
    : QObject(parent)
{
}

QString LoginItem::autostartPath()
{
    // The autostart folder is read by the session from the XDG configuration home, whatever Qt's own
    // settings paths say.
    QString config = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (config.isEmpty() || QDir::isRelativePath(config))
        config = QDir::homePath() + u"/.config"_s;
    return config + u"/autostart/kivo.desktop"_s;
}

QByteArray LoginItem::desktopEntry(const QString &executable)
{
    return (u"[Desktop Entry]\n"
            "Type=Application\n"
            "Name=Kivo\n"
            "Comment=Your visual library\n"
            "Exec=%1\n"
            "Icon=app.kivo.Kivo\n"
            "Terminal=false\n"
            "X-GNOME-Autostart-enabled=true\n"_s)
        .arg(quotedForExec(executable))
        .toUtf8();
}

bool LoginItem::isEnabled() const
{
    return QFileInfo::exists(autostartPath());
}

bool LoginItem::setEnabled(bool enabled)
{
    if (enabled == isEnabled())
        return true;
    const QString path = autostartPath();
    QString failure;
    if (enabled) {
        const QString folder = QFileInfo(path).absolutePath();
        QSaveFile file(path);
        if (!QDir().mkpath(folder))
            failure = u"could not create "_s + folder;
        else if (!file.open(QIODevice::WriteOnly) || file.write(desktopEntry(QCoreApplication::applicationFilePath())) < 0
                 || !file.commit())
            failure = u"could not write "_s + path + u": "_s + file.errorString();
    } else {
        QFile file(path);
        if (!file.remove())
            failure = u"could not remove "_s + path + u": "_s + file.errorString();
    }
    if (!failure.isEmpty()) {
        systemLog(u"[LoginItem] toggle failed: "_s + failure);
        return false;
    }
    Q_EMIT enabledChanged();
    return true;
}

} // namespace kivo
