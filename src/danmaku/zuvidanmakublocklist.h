#pragma once

#include <QList>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <bitset>
#include <utility>
#include <vector>

// The viewer's block list: one rule per line. A line written as
// /expression/ is a regular expression matched against the danmaku text as
// written; any other line is a word blocked wherever it appears, whatever
// its case. Blank lines and repeats are ignored. A broken expression never
// stops the others from working: it is left out and reported with its line.
class ZuviDanmakuBlockList
{
public:
    struct Problem {
        int line = 0; // 1-based
        QString rule;
        QString message;
    };

    explicit ZuviDanmakuBlockList(const QString &text = QString());

    bool isEmpty() const { return m_keywords.isEmpty() && m_expressions.isEmpty(); }
    int keywordCount() const { return int(m_keywords.size()); }
    int expressionCount() const { return m_expressionCount; }
    bool blocks(const QString &text) const;

    const QList<Problem> &problems() const { return m_problems; }
    // Every problem on a line of its own, for the editor; empty when all is well.
    QString problemText() const;

    // What is wrong with one rule line (empty when it is a usable rule or blank).
    static QString problemWithRule(const QString &line);
    // Whether a trimmed line is written as an expression.
    static bool isExpressionRule(const QString &line);

private:
    void compileExpressions(const QStringList &patterns);
    void indexKeywords();
    bool containsKeyword(QStringView folded) const;

    QStringList m_keywords; // case-folded
    // The keywords by their first code unit, sorted, and which code units
    // start one: a text is walked once, and only where a keyword could
    // begin are the keywords starting there compared.
    std::vector<std::pair<char16_t, QString>> m_keywordsByFirst;
    std::bitset<65536> m_keywordStarts;
    // Expressions that can share one matching pass are joined into a single
    // alternation; those that refer to their own groups by number or name
    // (back references, recursion) would change meaning there and run alone.
    QList<QRegularExpression> m_expressions;
    int m_expressionCount = 0;
    QList<Problem> m_problems;
};
