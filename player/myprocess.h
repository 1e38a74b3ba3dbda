#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

// A child process whose standard output and standard error arrive as one stream, cut into lines.
// Carriage return and line feed each end a line of their own (the player's progress lines end in
// a carriage return only), so "\r\n" gives a line and then an empty one.
class MyProcess : public QProcess
{
    Q_OBJECT

public:
    explicit MyProcess(QObject *parent = nullptr);

    // The first value added becomes the program, every later one an argument.
    void addArgument(const QString &argument);
    void clearArguments();
    // The program followed by its arguments.
    QStringList arguments() const;
    QString program() const { return m_program; }

    // Cuts at spaces outside double quotes; the quotes stay in the pieces and two adjacent
    // spaces give an empty piece.
    static QStringList splitArguments(const QString &text);

    // Forgets any partial line of an earlier run and starts the program, open for both ways.
    void start();
    bool isRunning() const;

    // Position of the first "\n" or "\r" at or after from, or -1.
    static int canReadLine(const QByteArray &data, int from);
    // Takes a chunk of the child's output and emits every line it completes.
    void genericRead(const QByteArray &chunk);

signals:
    void lineAvailable(QByteArray line);

public slots:
    void readStdOut();
    void procFinished();

private:
    QString m_program;
    QStringList m_arguments;
    QByteArray m_remainder;
    QByteArray m_line;
};
