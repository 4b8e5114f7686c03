#include "zuvidanmakublocklist.h"

#include <QSet>

#include <algorithm>

bool ZuviDanmakuBlockList::isExpressionRule(const QString &line)
{
    return line.size() >= 2 && line.startsWith(QLatin1Char('/')) && line.endsWith(QLatin1Char('/'));
}

QString ZuviDanmakuBlockList::problemWithRule(const QString &line)
{
    const QString rule = line.trimmed();
    if (!isExpressionRule(rule))
        return QString();
    const QString pattern = rule.mid(1, rule.size() - 2);
    if (pattern.isEmpty())
        return QStringLiteral("“%1” 是空的正则表达式，已忽略").arg(rule);
    const QRegularExpression expression(pattern);
    if (expression.isValid())
        return QString();
    return QStringLiteral("“%1” 不是有效的正则表达式（第 %2 个字符：%3），已忽略")
        .arg(rule)
        .arg(expression.patternErrorOffset() + 1)
        .arg(expression.errorString());
}

ZuviDanmakuBlockList::ZuviDanmakuBlockList(const QString &text)
{
    QSet<QString> seen;
    QStringList patterns;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (int i = 0; i < lines.size(); ++i) {
        const QString rule = lines.at(i).trimmed();
        if (rule.isEmpty() || seen.contains(rule))
            continue;
        seen.insert(rule);
        const QString problem = problemWithRule(rule);
        if (!problem.isEmpty()) {
            m_problems.append({i + 1, rule, problem});
            continue;
        }
        if (isExpressionRule(rule))
            patterns.append(rule.mid(1, rule.size() - 2));
        else
            m_keywords.append(rule.toCaseFolded());
    }
    compileExpressions(patterns);
    indexKeywords();
}

void ZuviDanmakuBlockList::indexKeywords()
{
    for (const QString &keyword : m_keywords) {
        const char16_t first = keyword.at(0).unicode();
        m_keywordsByFirst.emplace_back(first, keyword);
        m_keywordStarts.set(first);
    }
    std::sort(m_keywordsByFirst.begin(), m_keywordsByFirst.end());
}

bool ZuviDanmakuBlockList::containsKeyword(QStringView folded) const
{
    const qsizetype length = folded.size();
    for (qsizetype at = 0; at < length; ++at) {
        const char16_t unit = folded.at(at).unicode();
        if (!m_keywordStarts.test(unit))
            continue;
        const QStringView rest = folded.mid(at);
        auto candidate = std::lower_bound(
            m_keywordsByFirst.begin(), m_keywordsByFirst.end(), unit,
            [](const std::pair<char16_t, QString> &entry, char16_t u) { return entry.first < u; });
        for (; candidate != m_keywordsByFirst.end() && candidate->first == unit; ++candidate) {
            if (rest.startsWith(candidate->second))
                return true;
        }
    }
    return false;
}

void ZuviDanmakuBlockList::compileExpressions(const QStringList &patterns)
{
    m_expressionCount = int(patterns.size());
    // Numbered or named references to groups: \1, \g{..}, \k<..>, (?1), (?R), (?&..), (?P=..).
    static const QRegularExpression refersToGroups(
        QStringLiteral(R"(\\[1-9gk]|\(\?(?:[0-9+\-R&]|P[=>]))"));
    QStringList joinable;
    for (const QString &pattern : patterns) {
        if (pattern.contains(refersToGroups))
            m_expressions.append(QRegularExpression(pattern));
        else
            joinable.append(QStringLiteral("(?:%1)").arg(pattern));
    }
    if (!joinable.isEmpty()) {
        const QRegularExpression joined(joinable.join(QLatin1Char('|')));
        if (joined.isValid()) {
            m_expressions.append(joined);
        } else {
            // Two expressions naming a group alike cannot share a pattern.
            for (const QString &pattern : joinable)
                m_expressions.append(QRegularExpression(pattern));
        }
    }
    // Compiled now, once, rather than on the first item each one meets.
    for (QRegularExpression &expression : m_expressions)
        expression.optimize();
}

bool ZuviDanmakuBlockList::blocks(const QString &text) const
{
    if (!m_keywords.isEmpty()) {
        // Folding the text once lets every word compare case-sensitively.
        if (containsKeyword(text.toCaseFolded()))
            return true;
    }
    for (const QRegularExpression &expression : m_expressions) {
        if (expression.match(text).hasMatch())
            return true;
    }
    return false;
}

QString ZuviDanmakuBlockList::problemText() const
{
    QStringList lines;
    for (const Problem &problem : m_problems)
        lines.append(QStringLiteral("第 %1 行：%2").arg(problem.line).arg(problem.message));
    return lines.join(QLatin1Char('\n'));
}
