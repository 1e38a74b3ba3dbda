#pragma once

#include <QTextCodec>

// GBK, the pen's narrow text, made to carry names from the card that are not GBK: a byte that
// does not begin a GBK character becomes U+DC80 + the byte and is written back as that byte. A
// name read from the card as bytes thus reaches stat() and the player's command line as the same
// bytes, through QFile::encodeName and QProcess alike; GBK text reads as it always did.
// A character split between two chunks of a stream is kept as its bytes.
class CardNameCodec : public QTextCodec
{
public:
    // Makes it the codec for the locale (once per process; Qt's codec list owns it).
    static void install();

    QByteArray name() const override;
    int mibEnum() const override;

protected:
    QString convertToUnicode(const char *in, int length, ConverterState *state) const override;
    QByteArray convertFromUnicode(const QChar *in, int length,
                                  ConverterState *state) const override;

private:
    CardNameCodec();

    QTextCodec *m_gbk;
};
