// A translation catalogue (.ts) as the tests look at it, and the rules that its entries keep.
#pragma once

#include <QString>
#include <QStringList>
#include <map>
#include <utility>
#include <vector>

struct CatalogueEntry {
    QString translation;
    QString type; // "", "unfinished", "vanished" or "obsolete"
};

// By context and source text.
using Catalogue = std::map<std::pair<QString, QString>, CatalogueEntry>;

// Throws std::runtime_error for a file that can't be read.
Catalogue ReadCatalogue(const QString& path);

// Texts of `wanted` that `present` hasn't finished, and texts of `present` that aren't wanted.
QStringList FindGaps(const Catalogue& wanted, const Catalogue& present);

// What is wrong with a translation by itself: placeholders, blanks and line ends at the edges, punctuation;
// empty when nothing is.
QStringList FindFaults(const QString& source, const QString& translation);

// English term -> its Chinese words, of which a translation has at least one.
using Terms = std::vector<std::pair<QString, QStringList>>;

// The table "Terms" of a Markdown page.
Terms ReadTerms(const QString& path);
QStringList FindForeignTerms(const Terms& terms, const QString& source, const QString& translation);
