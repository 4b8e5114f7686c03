#include "account/zuviqrcodeimagegenerator.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

class TestZuviQRCodeImageGenerator : public QObject
{
    Q_OBJECT
private slots:
    void noImage_data();
    void noImage();
    void moduleArithmetic_data();
    void moduleArithmetic();
    void decodesBackToItsText_data();
    void decodesBackToItsText();
};

void TestZuviQRCodeImageGenerator::noImage_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("side");
    QTest::newRow("empty text") << QString() << 230.0;
    QTest::newRow("zero side") << "abc" << 0.0;
    QTest::newRow("negative side") << "abc" << -10.0;
    QTest::newRow("too long for version 40") << QString(3000, QLatin1Char('x')) << 230.0;
}

void TestZuviQRCodeImageGenerator::noImage()
{
    QFETCH(QString, text);
    QFETCH(double, side);
    QVERIFY(ZuviQRCodeImageGenerator::imageWithString(text, side).isNull());
}

void TestZuviQRCodeImageGenerator::moduleArithmetic_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("side");
    QTest::addColumn<int>("moduleSide");
    QTest::addColumn<int>("imageSide");
    // 20 bytes need version 2 at medium correction: 25 modules, 33 with the quiet zone.
    QTest::newRow("version 2 at 230") << "zuvi-login-key-00001" << 230.0 << 6 << 198;
    QTest::newRow("version 2 at 260") << "zuvi-login-key-00001" << 260.0 << 7 << 231;
    // 5 bytes fit version 1: 21 modules, 29 with the quiet zone.
    QTest::newRow("version 1 at 230") << "hello" << 230.0 << 7 << 203;
    QTest::newRow("never below one pixel") << "hello" << 10.0 << 1 << 29;
}

void TestZuviQRCodeImageGenerator::moduleArithmetic()
{
    QFETCH(QString, text);
    QFETCH(double, side);
    QFETCH(int, moduleSide);
    QFETCH(int, imageSide);
    const QImage image = ZuviQRCodeImageGenerator::imageWithString(text, side);
    QCOMPARE(image.size(), QSize(imageSide, imageSide));
    QVERIFY(!image.hasAlphaChannel());

    // Four white modules, then the finder pattern's dark corner at (4, 4).
    const int quiet = 4 * moduleSide;
    for (int i = 0; i < quiet; ++i) {
        QCOMPARE(image.pixel(i, i), qRgb(255, 255, 255));
        QCOMPARE(image.pixel(imageSide - 1 - i, imageSide - 1 - i), qRgb(255, 255, 255));
    }
    for (int i = 0; i < moduleSide; ++i)
        QCOMPARE(image.pixel(quiet + i, quiet + i), qRgb(0, 0, 0));
    // The finder's second ring is light: module (5, 5) after a whole dark module.
    QCOMPARE(image.pixel(quiet + moduleSide, quiet + moduleSide), qRgb(255, 255, 255));
}

void TestZuviQRCodeImageGenerator::decodesBackToItsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("login address")
        << "http://127.0.0.1:8470/login/confirm?qrcode_key=8f14e45fceea167a5a36dedd4bea2543";
    QTest::newRow("short") << "zuvi";
    QTest::newRow("long") << QString("k=%1").arg(QString(300, QLatin1Char('7')));
}

void TestZuviQRCodeImageGenerator::decodesBackToItsText()
{
    QFETCH(QString, text);
    const QString zbarimg = QStringLiteral(ZUVI_ZBARIMG_PATH);
    QVERIFY2(QFileInfo(zbarimg).isExecutable(), "zbarimg (zbar-tools) is needed");

    const QImage image = ZuviQRCodeImageGenerator::imageWithString(text, 260);
    QVERIFY(!image.isNull());
    QTemporaryDir dir;
    const QString path = dir.filePath("code.png");
    QVERIFY(image.save(path));

    QProcess process;
    process.start(zbarimg, {"--quiet", "--raw", path});
    QVERIFY(process.waitForFinished(30000));
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()).trimmed(), text);
}

QTEST_GUILESS_MAIN(TestZuviQRCodeImageGenerator)
#include "tst_zuviqrcodeimagegenerator.moc"
