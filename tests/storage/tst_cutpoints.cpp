// A change of the recording list and one of the settings, cut at each of their file operations
// in turn (the operation fails, or the process is killed right before it, as by a power cut):
// the file on the card is then the old one or the new one, whole, the next start loads every
// entry of it, and the next change goes through.

#include "storage/configwidget.h"
#include "storage/recfilemanager.h"
#include "testdeviceroot.h"

#include <QtTest>

namespace {

const QString listFile = QStringLiteral("/apps/config/reclist.ini");
const QString settingsFile = QStringLiteral("/apps/config/recconfig.ini");

// What the next start loads: the list's paths, or the five settings.
QStringList loaded(const QString &change)
{
    if (change == "list") {
        RecFileManager list;
        if (list.init(0) != 0)
            return {"unreadable"};
        QVector<QFileInfo> files;
        list.getInfoList(files);
        QStringList paths;
        for (const QFileInfo &file : files)
            paths << file.fileName();
        return paths;
    }
    const ConfigWidget s;
    return {QString::number(s.getFileFormat()), QString::number(s.getModeOption()),
            QString::number(s.getFileQuality()), QString::number(s.getLoopMode()),
            QString::number(s.getPlayVolume())};
}

} // namespace

class TestCutPoints : public QObject
{
    Q_OBJECT
private slots:
    void everyStepCut_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<QString>("mode");
        QTest::newRow("list-step-fails") << "list"
                                         << "fail";
        QTest::newRow("list-killed-at-step") << "list"
                                             << "kill";
        QTest::newRow("settings-step-fails") << "settings"
                                             << "fail";
        QTest::newRow("settings-killed-at-step") << "settings"
                                                 << "kill";
    }

    void everyStepCut()
    {
        QFETCH(QString, change);
        QFETCH(QString, mode);
        const TestDeviceRoot root;
        const QString file = change == "list" ? listFile : settingsFile;
        for (const char *name : {"a.mp3", "b.mp3", "c.mp3", "new.mp3"})
            QVERIFY(root.writeFile(QStringLiteral("/mnt/mmc/e_Recorder/") + name, "x"));
        {
            // the old files as the program writes them
            RecFileManager list;
            QCOMPARE(list.init(0), 0);
            for (const char *name : {"c.mp3", "b.mp3", "a.mp3"})
                list.addNewFileToList(root.path(QStringLiteral("/mnt/mmc/e_Recorder/") + name));
            ConfigWidget settings;
            settings.setFileFormat(1);
            settings.setPlayVolume(3);
        }
        const QByteArray old = root.readFile(file);
        const QStringList oldEntries = loaded(change);

        // uncut: the new file and the steps it takes
        const QStringList steps = run(change, 0, mode);
        const QByteArray fresh = root.readFile(file);
        const QStringList freshEntries = loaded(change);
        QVERIFY(fresh != old && freshEntries != oldEntries);
        // written aside and renamed into place, the folder synced after the rename
        const int renamed = steps.lastIndexOf("rename");
        QVERIFY2(renamed > 0 && steps.indexOf("fsync", renamed) > renamed,
                 qPrintable(steps.join(' ')));
        QVERIFY(steps.indexOf(QRegularExpression("f(data)?sync")) < renamed);

        for (int cut = 1; cut <= steps.size(); ++cut) {
            QVERIFY(root.writeFile(file, old));
            run(change, cut, mode);
            const QByteArray now = root.readFile(file);
            const QString at = QStringLiteral("cut at %1 (%2)").arg(cut).arg(steps.value(cut - 1));
            QVERIFY2(now == old || now == fresh, qPrintable(at));
            QVERIFY2(loaded(change) == (now == old ? oldEntries : freshEntries), qPrintable(at));
            // loading leaves it as it is, and the next change goes through
            QVERIFY2(root.readFile(file) == now, qPrintable(at));
            QVERIFY(root.writeFile(file, old));
            run(change, 0, mode);
            QVERIFY2(root.readFile(file) == fresh, qPrintable(at));
        }
        qInfo("%s change cut at each of its %d steps (%s): %s", qPrintable(change),
              int(steps.size()), qPrintable(mode), qPrintable(steps.join(' ')));
    }

private:
    // runs the change, cut at that step (0: not cut); the steps it counted when it lived
    static QStringList run(const QString &change, int cut, const QString &mode)
    {
        QProcess writer;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("CUT_AT", QString::number(cut));
        env.insert("CUT_MODE", mode);
        writer.setProcessEnvironment(env);
        writer.start(QStringLiteral(CUTPOINTWRITER_BIN), {change});
        if (!writer.waitForFinished(60000))
            return {"hung"};
        const QString out = writer.readAllStandardOutput();
        return out.section("steps: ", 1).trimmed().split(' ', Qt::SkipEmptyParts);
    }
};

QTEST_GUILESS_MAIN(TestCutPoints)
#include "tst_cutpoints.moc"
