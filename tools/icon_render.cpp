// Build-time helper: renders the scalable icon as a square PNG of each size asked for,
// so the bitmaps never drift from the drawing. Usage: icon_render SVG OUTDIR SIZE...
// writes OUTDIR/<size>x<size>/apps/brondel.png.

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc < 4)
        return 2;
    // Image plugins (the SVG reader among them) are found through the application.
    QGuiApplication app(argc, argv);
    const QString svg = QString::fromLocal8Bit(argv[1]);
    const QString out = QString::fromLocal8Bit(argv[2]);
    for (int i = 3; i < argc; ++i) {
        const int size = QByteArray(argv[i]).toInt();
        QImageReader reader(svg, "svg");
        reader.setScaledSize(QSize(size, size));
        QImage image = reader.read();
        const QString dir = QStringLiteral("%1/%2x%2/apps").arg(out).arg(size);
        if (image.isNull() || !QDir().mkpath(dir) || !image.save(dir + QStringLiteral("/brondel.png"), "PNG")) {
            std::fprintf(stderr, "icon_render: %s at %d: %s\n", argv[1], size, qPrintable(reader.errorString()));
            return 1;
        }
    }
    return 0;
}
