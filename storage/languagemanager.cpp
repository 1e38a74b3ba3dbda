#include "storage/languagemanager.h"

#include "storage/devicepath.h"

#include <QDebug>
#include <QFile>
#include <QStringList>
#include <QTextStream>

#include <unistd.h>

LanguageManager *LanguageManager::manager = nullptr;

LanguageManager *LanguageManager::Instance()
{
    if (!manager)
        manager = new LanguageManager;
    return manager;
}

void LanguageManager::quitFun()
{
    delete manager;
    manager = nullptr;
}

int languageInit()
{
    return LanguageManager::Instance()->init();
}

int LanguageManager::init()
{
    qDebug() << "in LanguageManager::init";
    // the display rows are deliberately not cleared: the table is loaded once per process
    m_fileInfos.clear();
    qDebug() << "file start";

    QFile file(devicePath(QStringLiteral("/apps/config/scanlanguage.cfg")));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        // only a missing table is made; one that exists but cannot be read is left alone
        if (file.exists() ||
            !file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Text)) {
            qDebug() << "open failed";
            return -1;
        }
        file.close();
        sync();
        qDebug() << "init end";
        return 0;
    }

    QTextStream in(&file);
    while (!in.atEnd()) {
        const QStringList columns = in.readLine().split(QLatin1Char('\t'), Qt::KeepEmptyParts);
        if (columns.size() != 7) {
            qDebug() << "not = 7";
            return -1;
        }
        languageInfo info;
        info.lanName = columns.at(0);
        info.lanInt = columns.at(1);
        info.chnName = columns.at(2);
        info.fileFlag = columns.at(3).toInt();
        info.ttsFlag = columns.at(4).toInt();
        info.showFlag = columns.at(5).toInt();
        info.defaultFlag = columns.at(6).toInt();
        info.fileIndex = m_fileInfos.size();
        if (info.fileFlag == 1)
            m_fileInfos.append(info);
        if (info.showFlag == 1) {
            qDebug() << "append showLan" << info.lanInt;
            m_showLanInfos.append(info);
        }
    }
    qDebug() << "init end";
    return 0;
}

int LanguageManager::getLanIntByID(int id) const
{
    qDebug() << "in LanguageManager::getLanIntByID id:" << id;
    qDebug() << "showLanInfos.size()" << m_showLanInfos.size();
    if (id < 0 || id >= m_showLanInfos.size()) {
        qDebug() << "id erroe";
        return 0;
    }
    qDebug() << "showLanInfos.at(id).lanInt:" << m_showLanInfos.at(id).lanInt;
    return m_showLanInfos.at(id).lanInt.toInt();
}

int LanguageManager::getIntByID(int id) const
{
    qDebug() << "in LanguageManager::getIntByID" << id;
    if (id < 0 || id >= m_fileInfos.size()) {
        qDebug() << "invalidate id";
        return 0;
    }
    qDebug() << "fileInfos[id].lanInt.toInt()" << m_fileInfos.at(id).lanInt;
    return m_fileInfos.at(id).lanInt.toInt();
}

QString LanguageManager::getShowLanByID(int id) const
{
    qDebug() << "in LanguageManager::getShowLanByID";
    if (id < 0 || id >= m_showLanInfos.size())
        return QString();
    return m_showLanInfos.at(id).chnName;
}

QString LanguageManager::getChnByID(int id) const
{
    qDebug() << "in LanguageManager::getInfoByID";
    if (id < 0 || id >= m_fileInfos.size())
        return QString();
    return m_fileInfos.at(id).chnName;
}

int LanguageManager::getTTSFlagByID(int id) const
{
    if (id < 0 || id >= m_fileInfos.size())
        return 0;
    return m_fileInfos.at(id).ttsFlag;
}

bool LanguageManager::getInfoByID(int id, languageInfo &info) const
{
    qDebug() << "in LanguageManager::getInfoByID";
    if (id < 0 || id >= m_fileInfos.size())
        return false;
    info = m_fileInfos.at(id);
    return true;
}

int LanguageManager::getIDByLanINT(int lanInt) const
{
    qDebug() << "in LanguageManager::getIDByShowLan";
    int id = 0;
    for (const languageInfo &info : m_showLanInfos) {
        if (info.lanInt.toInt() == lanInt)
            return id;
        ++id;
    }
    return id;
}

int LanguageManager::getDefaultShowLan() const
{
    qDebug() << "in getDefaultShowLan fileInfo.size" << m_fileInfos.size();
    for (const languageInfo &info : m_fileInfos) {
        if (info.defaultFlag == 1) {
            qDebug() << "the default show lan is" << info.lanInt;
            return info.lanInt.toInt();
        }
    }
    return 0;
}
