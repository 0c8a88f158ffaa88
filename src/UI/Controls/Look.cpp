#include "UI/Controls/Look.h"

#include "UI/Controls/KoltStyle.h"
#include "UI/Controls/LookTokens.h"
#include "UI/Controls/MessagePresenter.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QFont>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <algorithm>
#include <cmath>

static void InitResources() {
    // A static library's resources are only linked in when somebody asks for them.
    Q_INIT_RESOURCE(qrc_orv);
}

namespace Look {

namespace {

void ApplyFonts(QApplication& application) {
    // Names that appear in settings or code and that a Linux system seldom has lead to the faces of the look.
    const QStringList faces{"Inter", "Noto Sans CJK SC", "Noto Sans", "DejaVu Sans"};
    for (const char* name : {"Fangsong Ti", "FZShuSong-Z01S", "Segoe UI"})
        QFont::insertSubstitutions(name, faces);
    QFont::insertSubstitutions("Inter", faces.mid(1));
    QFont font("Inter");
    font.setPixelSize(fontPixels);
    font.setStyleStrategy(QFont::PreferAntialias);
    QApplication::setFont(font);
    application.setFont(font);
}

QPalette MakePalette() {
    QPalette palette;
    const auto set = [&palette](QPalette::ColorRole role, QRgb colour, QRgb disabled) {
        palette.setColor(role, QColor(colour));
        palette.setColor(QPalette::Disabled, role, QColor(disabled));
    };
    set(QPalette::Window, surface, surface);
    set(QPalette::WindowText, ink, disabledInk);
    set(QPalette::Base, surface, canvas);
    set(QPalette::AlternateBase, canvas, canvas);
    set(QPalette::Text, ink, disabledInk);
    set(QPalette::Button, surface, canvas);
    set(QPalette::ButtonText, ink, disabledInk);
    set(QPalette::BrightText, badInk, disabledInk);
    set(QPalette::Highlight, accentInk, pressed);
    set(QPalette::HighlightedText, onAccent, ink);
    set(QPalette::Link, accentInk, disabledInk);
    set(QPalette::LinkVisited, accentInk, disabledInk);
    set(QPalette::ToolTipBase, ink, ink);
    set(QPalette::ToolTipText, surface, surface);
    set(QPalette::PlaceholderText, disabledInk, disabledInk);
    set(QPalette::Light, surface, surface);
    set(QPalette::Midlight, canvas, canvas);
    set(QPalette::Mid, fieldLine, line);
    set(QPalette::Dark, mute, disabledIcon);
    set(QPalette::Shadow, ink2, ink2);
    return palette;
}

double Luminance(const QColor& colour) {
    const auto linear = [](double channel) {
        return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

} // namespace

void BeforeApplication() {
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    // 150 % is 150 %, not rounded to 200.
    QApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
}

void Apply(QApplication& application) {
    InitResources();
    QApplication::setAttribute(Qt::AA_DisableWindowContextHelpButton);
    ApplyFonts(application);
    // One base style everywhere, whatever the desktop prefers.
    QApplication::setStyle(new CKoltStyle);
    // The application owns its style.
    QApplication::setPalette(MakePalette()); // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)
    application.setStyleSheet(StyleSheet());
    RegisterMessagePresenter();
}

QString StyleSheet() {
    InitResources();
    QFile file(":/ORV/Resources/style/kolt.qss");
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QString sheet = QString::fromUtf8(file.readAll());
    // Longest names first: "@ink2" begins with "@ink".
    std::vector<Token> ordered(std::begin(tokens), std::end(tokens));
    std::sort(ordered.begin(), ordered.end(),
              [](const Token& a, const Token& b) { return qstrlen(a.name) > qstrlen(b.name); });
    for (const Token& token : ordered)
        sheet.replace(QLatin1Char('@') + QLatin1String(token.name), QColor(token.colour).name());
    return sheet;
}

QColor Colour(const QString& token) {
    for (const Token& known : tokens)
        if (token == QLatin1String(known.name))
            return QColor(known.colour);
    return {};
}

QPixmap Picture(const QString& path) {
    const qreal ratio = qApp->devicePixelRatio();
    const QFileInfo file(path);
    const QString twice = file.path() + '/' + file.completeBaseName() + "@2x." + file.suffix();
    if (ratio <= 1.0 || !QFile::exists(twice))
        return QPixmap(path);
    QImage image(twice);
    const QSize points = image.size() / 2;
    const QSize wanted(qRound(points.width() * ratio), qRound(points.height() * ratio));
    if (image.size() != wanted)
        image = image.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QPixmap result = QPixmap::fromImage(image);
    result.setDevicePixelRatio(ratio);
    return result;
}

double Contrast(const QColor& a, const QColor& b) {
    const double one = Luminance(a) + 0.05;
    const double other = Luminance(b) + 0.05;
    return std::max(one, other) / std::min(one, other);
}

namespace {

bool IsFigure(QChar c) {
    return c >= '0' && c <= '9';
}

int WidestFigure(const QFontMetrics& metrics) {
    int widest = 0;
    for (char figure = '0'; figure <= '9'; ++figure)
        widest = std::max(widest, metrics.horizontalAdvance(QLatin1Char(figure)));
    return widest;
}

// Calls `piece(text, x, width)` for each figure and each run of other characters; returns the whole width.
template<typename Piece>
int LayOutFigures(const QFontMetrics& metrics, const QString& text, Piece piece) {
    const int cell = WidestFigure(metrics);
    int x = 0;
    for (int i = 0; i < text.size();) {
        int end = i + 1;
        while (!IsFigure(text[i]) && end < text.size() && !IsFigure(text[end]))
            ++end;
        const QString part = text.mid(i, end - i);
        const int width = IsFigure(text[i]) ? cell : metrics.horizontalAdvance(part);
        piece(part, x, width);
        x += width;
        i = end;
    }
    return x;
}

} // namespace

int FigureWidth(const QFontMetrics& metrics, const QString& text) {
    return LayOutFigures(metrics, text, [](const QString&, int, int) {});
}

void DrawFigures(QPainter& painter, const QRect& room, const QString& text) {
    const QFontMetrics metrics = painter.fontMetrics();
    QString shown = text;
    if (FigureWidth(metrics, text) > room.width())
        shown = metrics.elidedText(text, Qt::ElideRight, room.width());
    const int baseline = room.top() + (room.height() - metrics.height()) / 2 + metrics.ascent();
    LayOutFigures(metrics, shown, [&](const QString& part, int x, int width) {
        const int slack = IsFigure(part[0]) ? (width - metrics.horizontalAdvance(part)) / 2 : 0;
        painter.drawText(room.left() + x + slack, baseline, part);
    });
}

} // namespace Look
