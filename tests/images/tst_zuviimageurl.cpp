#include "images/zuviimageurl.h"

#include <QtTest>

class TestZuviImageURL : public QObject
{
    Q_OBJECT
private slots:
    void normalizedURLString_data();
    void normalizedURLString();
    void thumbnailURLString_data();
    void thumbnailURLString();
};

void TestZuviImageURL::normalizedURLString_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("expected");
    // What gives no address at all (no value, not text, blank) is the
    // loader suite's failure table, which also sees that nothing is fetched.
    QTest::newRow("trimmed") << QVariant(QStringLiteral("\n  http://h/a.jpg \r\n"))
                             << QStringLiteral("http://h/a.jpg");
    QTest::newRow("utf-8") << QVariant(QStringLiteral("http://h/封面.jpg"))
                           << QStringLiteral("http://h/%E5%B0%81%E9%9D%A2.jpg");
    QTest::newRow("not un-escaped first")
        << QVariant(QStringLiteral("http://h/a%20b.jpg")) << QStringLiteral("http://h/a%2520b.jpg");
    QTest::newRow("reserved and marks kept")
        << QVariant(QStringLiteral("https://u:p@h:8/a-_.!~*'();/?:@&=+$,#f"))
        << QStringLiteral("https://u:p@h:8/a-_.!~*'();/?:@&=+$,#f");
    QTest::newRow("unsafe escaped") << QVariant(QStringLiteral("http://h/\"<>[\\]^`{|}"))
                                    << QStringLiteral("http://h/%22%3C%3E%5B%5C%5D%5E%60%7B%7C%7D");
}

void TestZuviImageURL::normalizedURLString()
{
    QFETCH(QVariant, value);
    QFETCH(QString, expected);
    const QString result = ZuviImageURL::normalizedURLString(value);
    QCOMPARE(result.isNull(), expected.isNull());
    QCOMPARE(result, expected);
}

void TestZuviImageURL::thumbnailURLString_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("quality");
    QTest::addColumn<QString>("expected");

    QTest::newRow("empty") << QString() << 320 << 180 << 80 << QString();
    QTest::newRow("query kept") << "https://h/a/b.png?x=1" << 320 << 180 << 80
                                << "https://h/a/b.png@320w_180h_1c_80q.jpg?x=1";
    QTest::newRow("@ in the authority")
        << "https://u@h/a.png" << 320 << 180 << 80 << "https://u@h/a.png@320w_180h_1c_80q.jpg";
    QTest::newRow("@ without any /") << "a@b" << 320 << 180 << 80 << "a@b";
    QTest::newRow("@ and / only in the query") << "https://h/a.png?p=x@y/z" << 320 << 180 << 80
                                               << "https://h/a.png@320w_180h_1c_80q.jpg?p=x@y/z";
    QTest::newRow("escapes not taken for placeholders")
        << "https://h/%1A%2B.png" << 320 << 180 << 80
        << "https://h/%1A%2B.png@320w_180h_1c_80q.jpg";
}

void TestZuviImageURL::thumbnailURLString()
{
    QFETCH(QString, url);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(int, quality);
    QFETCH(QString, expected);
    QCOMPARE(ZuviImageURL::thumbnailURLStringForURLString(url, width, height, quality), expected);
}

QTEST_GUILESS_MAIN(TestZuviImageURL)
#include "tst_zuviimageurl.moc"
