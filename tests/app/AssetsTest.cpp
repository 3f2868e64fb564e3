#include "support/Form.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QResource>
#include <QtTest>

namespace {

struct Asset
{
    const char* name;
    int width;
    int height;
};

constexpr Asset Logo{"Vantrel.png", 300, 53};

// The buttons show all images but one, which the collection has and nothing shows.
QVector<Asset> strips()
{
    QVector<Asset> all{{"play.png", 30, 90},
                       {SettingsButton.image, SettingsButton.height, 3 * SettingsButton.height}};
    for (const ImageButton& button : ImageButtons)
        all.append({button.image, button.height, 3 * button.height});
    return all;
}

QString path(const Asset& asset)
{
    return QString(":/assets/") + asset.name;
}

// One of the three square pictures of a strip, from the top.
QImage frame(const QImage& strip, int index)
{
    return strip.copy(0, index * strip.width(), strip.width(), strip.width());
}

bool isBlank(const QImage& image)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y).alpha() != 0)
                return false;
        }
    }
    return true;
}

} // namespace

// Named after the collection.
extern int qInitResources_vantrel();
extern int qCleanupResources_vantrel();

Q_DECLARE_METATYPE(Asset)

/** The images that are compiled into the program. They need no application object, so there is none here. */
class AssetsTest : public QObject
{
    Q_OBJECT

private slots:

    void theCollectionIsNamedVantrel()
    {
        QCOMPARE(qCleanupResources_vantrel(), 1);
        QVERIFY(!QFile::exists(path(Logo)));
        QCOMPARE(qInitResources_vantrel(), 1);
        QVERIFY(QFile::exists(path(Logo)));
    }

    void theCollectionHoldsTheseImagesAndNothingElse()
    {
        QStringList expected{Logo.name};
        const auto all = strips();
        for (const Asset& strip : all)
            expected.append(strip.name);
        expected.sort();

        QCOMPARE(QDir(":/assets").entryList(QDir::NoFilter, QDir::Name), expected);
    }

    void anImageHasItsSizeAndTransparency_data()
    {
        addStrips();
        QTest::newRow(Logo.name) << Logo;
    }

    void anImageHasItsSizeAndTransparency()
    {
        QFETCH(Asset, asset);
        QCOMPARE(QImage(path(asset)).size(), QSize(asset.width, asset.height));

        // PNG: the header chunk holds the bits per channel at byte 24 of the file, the colour type at 25.
        const QByteArray png = fileContent(path(asset));
        QVERIFY(png.startsWith("\x89PNG\r\n\x1A\n"));
        QCOMPARE(int(png.at(24)), 8);
        QCOMPARE(int(png.at(25)), 6);

        // The collection does not compress the file, and keeps its time.
        const QResource resource(path(asset));
        QCOMPARE(QByteArray(reinterpret_cast<const char*>(resource.data()), int(resource.size())), png);
        QVERIFY(resource.lastModified().isValid());
    }

    void aStripShowsThreeDifferentStates_data() { addStrips(); }

    void aStripShowsThreeDifferentStates()
    {
        QFETCH(Asset, asset);
        const QImage strip(path(asset));
        const QImage normal = frame(strip, 0);
        const QImage hovered = frame(strip, 1);
        const QImage pressed = frame(strip, 2);

        QVERIFY(!isBlank(normal));
        QVERIFY(!isBlank(hovered));
        QVERIFY(!isBlank(pressed));
        QVERIFY(normal != hovered);
        QVERIFY(hovered != pressed);
        QVERIFY(pressed != normal);
    }

    void everyImageIsItsOwnPicture()
    {
        const auto all = strips();
        for (const Asset& strip : all) {
            for (const Asset& other : all) {
                if (&strip != &other)
                    QVERIFY2(QImage(path(strip)) != QImage(path(other)), strip.name);
            }
        }
    }

private:
    static void addStrips()
    {
        QTest::addColumn<Asset>("asset");
        const auto all = strips();
        for (const Asset& strip : all)
            QTest::newRow(strip.name) << strip;
    }
};

QTEST_APPLESS_MAIN(AssetsTest)
#include "AssetsTest.moc"
