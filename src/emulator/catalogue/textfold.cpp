#include "textfold.h"

namespace emulator::catalogue {

QString fold(const QString& text)
{
    const QString decomposed = text.simplified().normalized(QString::NormalizationForm_KD);
    QString folded;
    folded.reserve(decomposed.size());
    for (const QChar letter : decomposed) {
        if (letter.category() != QChar::Mark_NonSpacing)
            folded += letter;
    }
    return folded.toCaseFolded();
}

QString sortKey(const QString& text)
{
    QString folded = fold(text);
    for (const auto& article :
        { QLatin1String("the "), QLatin1String("a "), QLatin1String("an ") }) {
        if (folded.startsWith(article))
            return folded.mid(article.size());
    }
    return folded;
}

QStringList words(const QString& text)
{
    QStringList found;
    QString word;
    for (const QChar letter : fold(text) + QLatin1Char(' ')) {
        if (letter.isLetterOrNumber() || letter.isSurrogate()) {
            word += letter;
        } else if (letter == QLatin1Char('\'') || letter == QChar(0x2019)) {
            continue; // "don't" is one word
        } else if (!word.isEmpty()) {
            found += word;
            word.clear();
        }
    }
    return found;
}

} // namespace emulator::catalogue
