#include "player/cardnamecodec.h"

namespace {

// U+DC80..U+DCFF: lone low surrogates, which no decoded text holds otherwise
constexpr ushort escapeBase = 0xDC00;

bool isEscape(const QChar *text, int i)
{
    const ushort c = text[i].unicode();
    return c >= escapeBase + 0x80 && c <= escapeBase + 0xFF &&
           !(i > 0 && text[i - 1].isHighSurrogate());
}

} // namespace

CardNameCodec::CardNameCodec() : m_gbk(QTextCodec::codecForName("GBK")) {}

void CardNameCodec::install()
{
    static QTextCodec *const codec = new CardNameCodec;
    QTextCodec::setCodecForLocale(codec);
}

QByteArray CardNameCodec::name() const
{
    return QByteArrayLiteral("GBK-card-names");
}

int CardNameCodec::mibEnum() const
{
    // not a registered character set
    return -2023;
}

QString CardNameCodec::convertToUnicode(const char *in, int length, ConverterState *) const
{
    QString text(length, Qt::Uninitialized);
    QChar *out = text.data();
    int n = 0;
    for (int i = 0; i < length; ++i) {
        const auto byte = uchar(in[i]);
        if (byte < 0x80) {
            out[n++] = QLatin1Char(char(byte));
            continue;
        }
        if (i + 1 < length) {
            ConverterState strict(ConvertInvalidToNull);
            const QString pair = m_gbk->toUnicode(in + i, 2, &strict);
            // only a character that GBK writes back as the same two bytes
            if (strict.invalidChars == 0 && pair.size() == 1 &&
                m_gbk->fromUnicode(pair) == QByteArray::fromRawData(in + i, 2)) {
                out[n++] = pair.at(0);
                ++i;
                continue;
            }
        }
        out[n++] = QChar(ushort(escapeBase + byte));
    }
    text.truncate(n);
    return text;
}

QByteArray CardNameCodec::convertFromUnicode(const QChar *in, int length, ConverterState *) const
{
    QByteArray bytes;
    bytes.reserve(length);
    for (int i = 0; i < length; ++i) {
        const ushort c = in[i].unicode();
        if (c < 0x80 || isEscape(in, i)) {
            bytes += char(c < 0x80 ? c : c - escapeBase);
            continue;
        }
        const int size =
            in[i].isHighSurrogate() && i + 1 < length && in[i + 1].isLowSurrogate() ? 2 : 1;
        bytes += m_gbk->fromUnicode(in + i, size);
        i += size - 1;
    }
    return bytes;
}
