#include "LogCapture.h"
#include "TestMain.h"
#include "ui/Picture.h"
#include "ui/PictureFile.h"
#include "ui/PictureView.h"

#include <QPainter>
#include <QResource>
#include <QSvgRenderer>
#include <QTest>

namespace {

const QString Plate = QStringLiteral("PLAY_NORMAL");

// In the middle of a sheet of that colour, on a screen of that scale.
QImage painted(const QString &picture, double scale, const QColor &sheet)
{
    QImage image(QSize(300, 100) * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(sheet);
    QPainter painter(&image);
    Picture::named(picture).paint(painter, QRectF(40, 20, 220, 64));
    return image;
}

} // namespace

class TestPicture : public QObject
{
    Q_OBJECT

private slots:
    void isDrawnFromWhereItLies();
    void isSharpAtScalesThatNobodyRendered();
    void isAsLargeAsItsDrawing();
    void isNoneWithoutADrawing();
    void tellsTheLogWhenItCannotBeDrawn();
    void takesThePlaceOfWhatLiesBehind();
    void hasEachIconOfTheMacSet_data();
    void hasEachIconOfTheMacSet();
};

void TestPicture::isDrawnFromWhereItLies()
{
    const QResource resource(QStringLiteral(":/rendered/backdrop@100.pixels"));
    QVERIFY(resource.isValid());
    PictureFile file;
    QVERIFY(file.decode(resource.uncompressedData()));
    QCOMPARE(file.image.size(), QSize(1000, 640));
    QVERIFY(file.image.constBits() == resource.data() + sizeof(PictureFile::Header));
    // Bytes that no picture can begin at are copied; what is none is refused.
    const QByteArray shifted = "x" + resource.uncompressedData();
    PictureFile copied;
    QVERIFY(copied.decode(QByteArray::fromRawData(shifted.constData() + 1, shifted.size() - 1)));
    QCOMPARE(copied.image, file.image);
    QVERIFY(!copied.decode(QByteArray(sizeof(PictureFile::Header), '\0')));
}

void TestPicture::isSharpAtScalesThatNobodyRendered()
{
    constexpr double scale = 1.25;
    QImage expected = painted(QString(), scale, Qt::darkGreen);
    QSvgRenderer drawing(QStringLiteral(":/artwork/%1.svg").arg(Plate));
    QVERIFY(drawing.isValid());
    QImage plate(QSize(220, 64) * scale, QImage::Format_ARGB32_Premultiplied);
    plate.fill(Qt::transparent);
    QPainter platePainter(&plate);
    drawing.render(&platePainter);
    platePainter.end();
    plate.setDevicePixelRatio(scale);
    QPainter(&expected).drawImage(QPointF(40, 20), plate);

    QVERIFY(expected != painted(QString(), scale, Qt::darkGreen));
    QCOMPARE(painted(Plate, scale, Qt::darkGreen), expected);
}

void TestPicture::isAsLargeAsItsDrawing()
{
    QCOMPARE(Picture::named(Plate).size(), QSize(220, 64));
    QCOMPARE(Picture().size(), QSize());
}

void TestPicture::isNoneWithoutADrawing()
{
    QVERIFY(Picture::named(QStringLiteral("nobody")).isNull());
    QCOMPARE(painted(QStringLiteral("nobody"), 1, Qt::red), painted(QString(), 1, Qt::red));
}

void TestPicture::tellsTheLogWhenItCannotBeDrawn()
{
    const LogCapture log;
    const Picture held = Picture::named(QStringLiteral("broken"));
    for (int time = 0; time < 2; ++time)
        QCOMPARE(painted(QStringLiteral("broken"), 1, Qt::red), painted(QString(), 1, Qt::red));
    QCOMPARE(log.lines().size(), 1); // once, not at each painting
    QVERIFY2(log.lines().first().startsWith(QStringLiteral("The picture broken cannot be drawn: ")),
             qUtf8Printable(log.lines().first()));
}

void TestPicture::takesThePlaceOfWhatLiesBehind()
{
    PictureView view;
    view.setPictureName(Plate);
    view.resize(220, 64);
    const auto look = [&view] {
        QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::red);
        view.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return image;
    };
    QCOMPARE(look().pixelColor(0, 0), QColor(Qt::red)); // past the plate's round corner
    view.setReplacesBackground(true);
    QCOMPARE(look().pixelColor(0, 0).alpha(), 0);
}

void TestPicture::hasEachIconOfTheMacSet_data()
{
    QTest::addColumn<int>("pixels");
    for (const int points : {16, 32, 128, 256, 512}) {
        const QString name = QStringLiteral("icon_%1x%1").arg(points);
        QTest::newRow(qPrintable(name + QStringLiteral(".png"))) << points;
        QTest::newRow(qPrintable(name + QStringLiteral("@2x.png"))) << 2 * points;
    }
}

void TestPicture::hasEachIconOfTheMacSet()
{
    QFETCH(int, pixels);
    const QImage icon(
        QStringLiteral(QUELLMOOR_SOURCE_FOLDER "/ui/artwork/icons/Quellmoor.iconset/") +
        QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(icon.size(), QSize(pixels, pixels));
    QVERIFY(icon.hasAlphaChannel());
    QCOMPARE(qAlpha(icon.pixel(pixels / 2, pixels / 2)), 255);
}

QUELLMOOR_TEST(TestPicture, "Picture")
#include "tst_Picture.moc"
