#include "stats/recordLine.h"

#include <QRandomGenerator>
#include <QTest>

class recordLineTest : public QObject
{
    Q_OBJECT

private slots:
    void readsNumbersAsTheToolkit();
};

void recordLineTest::readsNumbersAsTheToolkit()
{
    QRandomGenerator random(20160);
    constexpr char alphabet[] = "0123456789-+ \t.a\xa0";
    for (int i = 0; i < 20000; ++i) {
        QByteArray text(random.bounded(12), '0');
        for (char &character : text)
            character = alphabet[random.bounded(random.bounded(2) ? 10 : int(sizeof alphabet) - 1)];
        QCOMPARE(readNumber({text.constData(), static_cast<std::size_t>(text.size())}),
                 QString::fromLatin1(text).toInt());
    }
}

QTEST_APPLESS_MAIN(recordLineTest)
#include "recordLineTest.moc"
