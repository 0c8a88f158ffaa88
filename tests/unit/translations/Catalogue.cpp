#include "Catalogue.h"

#include <QFile>
#include <QRegularExpression>
#include <QXmlStreamReader>
#include <algorithm>
#include <stdexcept>

namespace {

QByteArray ReadAll(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("can't read " + path.toStdString());
    return file.readAll();
}

// Han characters are [一-鿿]: \p{Han} would take in marks like 。 too.

// All matches in order of their text, as often as they occur.
QStringList Matches(const QString& pattern, const QString& text) {
    QStringList found;
    for (auto match = QRegularExpression(pattern).globalMatch(text); match.hasNext();)
        found << match.next().captured(0);
    found.sort();
    return found;
}

bool HasHan(const QString& text) {
    return !Matches("[一-鿿]", text).isEmpty();
}

QString WithoutMnemonic(const QString& translation) {
    return QString(translation).remove(QRegularExpression("\\(&[A-Z]\\)"));
}

} // namespace

Catalogue ReadCatalogue(const QString& path) {
    QXmlStreamReader xml(ReadAll(path));
    Catalogue catalogue;
    QString context;
    QString source;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == "name") {
            context = xml.readElementText();
        } else if (xml.name() == "source") {
            source = xml.readElementText();
        } else if (xml.name() == "translation") {
            const QString type = xml.attributes().value("type").toString();
            catalogue[{context, source}] = {xml.readElementText(), type};
        }
    }
    if (xml.hasError())
        throw std::runtime_error(path.toStdString() + ": " + xml.errorString().toStdString());
    return catalogue;
}

QStringList FindGaps(const Catalogue& wanted, const Catalogue& present) {
    QStringList gaps;
    for (const auto& [key, unused] : wanted) {
        const auto found = present.find(key);
        const QString text = key.first + ": \"" + key.second + "\"";
        if (found == present.end())
            gaps << "missing: " + text;
        else if (!found->second.type.isEmpty() || found->second.translation.isEmpty())
            gaps << "unfinished: " + text;
    }
    for (const auto& [key, unused] : present) {
        if (wanted.find(key) == wanted.end())
            gaps << "no longer used: " + key.first + ": \"" + key.second + "\"";
    }
    return gaps;
}

QStringList FindFaults(const QString& source, const QString& translation) {
    QStringList faults;
    const auto same = [&](const char* what, const QString& pattern) {
        if (Matches(pattern, source) != Matches(pattern, translation))
            faults << QString("other %1").arg(what);
    };
    same("placeholders", "%[0-9n]+");
    same("blanks at the start", "^\\s+");
    // Blanks in plenty align columns of a proportional font; in another script it takes another number.
    if (Matches(" {2,}$", source).isEmpty())
        same("blanks at the end", "\\s+$");
    else if (!translation.endsWith(' '))
        faults << "other blanks at the end";
    same("tags", "</?[a-z]+[^>]*>");
    const auto mnemonic = [](const QString& text) { return Matches("&[A-Za-z]", text).join(' ').toUpper(); };
    if (mnemonic(source).isEmpty() != mnemonic(translation).isEmpty())
        faults << "other mnemonic";
    if (!Matches("&[A-Za-z]", translation).isEmpty() && WithoutMnemonic(translation).contains('&'))
        faults << "mnemonic not in brackets behind the text";
    // Chinese marks stand for these; a colon between figures or in "://" isn't a mark, nor is what parts the
    // filters of a file dialog.
    if (!Matches("[一-鿿][,;:?!.](?![.0-9])|[,;:?!][一-鿿]|[一-鿿]\\((?!&|\\*)",
                 QString(translation).replace(";;", " "))
             .isEmpty())
        faults << "punctuation of half width";
    if (!Matches("[一-鿿][A-Za-z0-9]|[A-Za-z0-9][一-鿿]", translation).isEmpty())
        faults << "no blank between Han and Latin";
    if (source.trimmed().endsWith('.') && !source.endsWith("...") && HasHan(translation) &&
        !Matches("[^。）.]$", translation.trimmed()).isEmpty())
        faults << "a sentence without its end";
    return faults;
}

Terms ReadTerms(const QString& path) {
    const QString page = QString::fromUtf8(ReadAll(path));
    Terms terms;
    static const QRegularExpression row("^\\| ([^|]+) \\| ([^|]+) \\|$", QRegularExpression::MultilineOption);
    for (auto match = row.globalMatch(page.mid(page.indexOf("## Terms"))); match.hasNext();) {
        const auto cells = match.next();
        if (HasHan(cells.captured(2)))
            terms.emplace_back(cells.captured(1), cells.captured(2).split('/'));
    }
    return terms;
}

QStringList FindForeignTerms(const Terms& terms, const QString& source, const QString& translation) {
    QStringList foreign;
    for (const auto& [english, chinese] : terms) {
        const QRegularExpression word("\\b" + QRegularExpression::escape(english) + "\\b",
                                      QRegularExpression::CaseInsensitiveOption);
        if (word.match(source).hasMatch() &&
            std::none_of(chinese.begin(), chinese.end(),
                         [&](const QString& term) { return translation.contains(term); }))
            foreign << english + " isn't " + chinese.join(" or ");
    }
    return foreign;
}
