#include "LikeMatcher.h"

#include <vector>

namespace {

// One element of a compiled pattern; everything but Any matches exactly one
// character.
struct Token
{
    enum Kind { Any, One, Digit, Literal, List } kind = Literal;
    QChar literal;
    bool negated = false;
    std::vector<std::pair<QChar, QChar>> ranges;

    bool Matches(QChar c) const
    {
        switch (kind) {
        case One:
            return true;
        case Digit:
            return c >= u'0' && c <= u'9';
        case Literal:
            return c == literal;
        case List:
            return InList(c) != negated;
        case Any:
            break;
        }
        return false;
    }

    bool InList(QChar c) const
    {
        for (const auto &[low, high] : ranges)
            if (c >= low && c <= high)
                return true;
        return false;
    }
};

// Reads the list after the "[" at Open; false when no "]" closes it.
bool ReadList(const QString &pattern, qsizetype open, Token &token, qsizetype &next)
{
    const qsizetype close = pattern.indexOf(u']', open + 1);
    if (close < 0)
        return false;
    QStringView body = QStringView(pattern).mid(open + 1, close - open - 1);
    token.kind = Token::List;
    token.negated = body.startsWith(u'!');
    if (token.negated)
        body = body.mid(1);
    for (qsizetype i = 0; i < body.size(); ++i) {
        const bool range = i + 2 < body.size() && body.at(i + 1) == u'-';
        token.ranges.emplace_back(body.at(i), range ? body.at(i + 2) : body.at(i));
        if (range)
            i += 2;
    }
    if (token.negated && token.ranges.empty())
        token.kind = Token::One;
    next = close + 1;
    return true;
}

std::vector<Token> Compile(const QString &pattern)
{
    std::vector<Token> tokens;
    for (qsizetype i = 0; i < pattern.size();) {
        Token token;
        const QChar c = pattern.at(i);
        qsizetype next = i + 1;
        if (c == u'*')
            token.kind = Token::Any;
        else if (c == u'?')
            token.kind = Token::One;
        else if (c == u'#')
            token.kind = Token::Digit;
        else if (c != u'[' || !ReadList(pattern, i, token, next))
            token.literal = c;
        if (token.kind != Token::Any || tokens.empty() || tokens.back().kind != Token::Any)
            tokens.push_back(std::move(token));
        i = next;
    }
    return tokens;
}

} // namespace

bool Like(const QString &Text, const QString &Pattern, Qt::CaseSensitivity Case)
{
    const bool fold = Case == Qt::CaseInsensitive;
    const QString text = fold ? Text.toCaseFolded() : Text;
    const std::vector<Token> tokens = Compile(fold ? Pattern.toCaseFolded() : Pattern);

    // Every token but Any takes one character, so returning to the last star
    // and letting it take one character more is enough: no deeper backtracking.
    size_t t = 0;
    qsizetype i = 0;
    size_t starToken = tokens.size();
    qsizetype starText = 0;
    while (i < text.size()) {
        if (t < tokens.size() && tokens[t].kind == Token::Any) {
            starToken = t++;
            starText = i;
        } else if (t < tokens.size() && tokens[t].Matches(text.at(i))) {
            ++t;
            ++i;
        } else if (starToken < tokens.size()) {
            t = starToken + 1;
            i = ++starText;
        } else {
            return false;
        }
    }
    while (t < tokens.size() && tokens[t].kind == Token::Any)
        ++t;
    return t == tokens.size();
}
