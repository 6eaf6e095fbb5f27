#include "UserDefaults.h"

#include <QFile>
#include <QStandardPaths>

namespace tidemark {

FileURL UserDefaults::file()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return FileURL::directory(QFile::encodeName(folder).toStdString())
        .appending("Tidemark", FileURL::Kind::directory)
        .appending("Tidemark.conf");
}

UserDefaults::UserDefaults(const FileURL& file)
    : m_settings(QFile::decodeName(QByteArray::fromStdString(file.path())), QSettings::IniFormat)
{
}

std::optional<std::string> UserDefaults::string(const std::string& key) const
{
    const QVariant value = m_settings.value(QString::fromStdString(key));
    if (value.typeId() != QMetaType::QString)
        return {};
    return value.toString().toStdString();
}

void UserDefaults::set(const std::string& key, const std::string& value)
{
    m_settings.setValue(QString::fromStdString(key), QString::fromStdString(value));
    m_settings.sync();
}

}  // namespace tidemark
