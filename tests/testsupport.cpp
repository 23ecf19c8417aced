#include "tests/testsupport.h"

#include "core/librarylocation.h"
#include "core/userdefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace kivo::test {

Sandbox::Sandbox()
{
    QStandardPaths::setTestModeEnabled(true);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.path() + u"/config"_s);
    LibraryLocation::resetForTesting();
    setLibraryRoot(libraryRoot());
}

Sandbox::~Sandbox()
{
    LibraryLocation::resetForTesting();
}

void Sandbox::setLibraryRoot(const QString &root)
{
    UserDefaults defaults;
    defaults.setValue(u"libraryPath"_s, root);
    defaults.sync();
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
}

} // namespace kivo::test
