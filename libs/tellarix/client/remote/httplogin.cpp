// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/httplogin_p.h>

#include <QCryptographicHash>
#include <QRandomGenerator>

namespace Tellarix {
namespace IO {

namespace {

bool isTokenCharacter(char c)
{
    return static_cast<signed char>(c) > ' ' && c != ',' && c != '=' && c != '"';
}

/** Cuts words off the text of a header. */
struct Words
{
    const QByteArray &text;
    int at{0};

    bool atEnd() const { return at >= text.size(); }
    void skip(const char *characters)
    {
        while (!atEnd() && QByteArray(characters).contains(text[at]))
            ++at;
    }
    bool take(char c)
    {
        const bool there = !atEnd() && text[at] == c;
        at += there ? 1 : 0;
        return there;
    }
    QByteArray token()
    {
        const int begin = at;
        while (!atEnd() && isTokenCharacter(text[at]))
            ++at;
        return text.mid(begin, at - begin);
    }
    QByteArray value()
    {
        if (!take('"')) {
            // The padding of a token is part of it.
            const int begin = at;
            while (!atEnd() && text[at] != ',' && text[at] != ' ')
                ++at;
            return text.mid(begin, at - begin);
        }
        QByteArray value;
        while (!atEnd() && !take('"')) {
            if (text[at] == '\\' && at + 1 < text.size())
                ++at;
            value += text[at++];
        }
        return value;
    }
};

QByteArray quoted(const QByteArray &text)
{
    QByteArray result = text;
    return '"' + result.replace('\\', "\\\\").replace('"', "\\\"") + '"';
}

} // namespace

std::vector<HttpLogin::Challenge> HttpLogin::parse(const QByteArray &text)
{
    std::vector<Challenge> challenges;
    Words words{text};
    while (words.skip(" \t,"), !words.atEnd()) {
        const QByteArray word = words.token().toLower();
        if (word.isEmpty()) {
            ++words.at;
            continue;
        }
        words.skip(" \t");
        if (!words.take('='))
            challenges.push_back({word, {}});
        else if (words.skip(" \t"); !challenges.empty())
            challenges.back().values.insert(word, words.value());
        else
            words.value();
    }
    return challenges;
}

int HttpLogin::strengthOf(const Challenge &challenge)
{
    if (challenge.scheme == "basic")
        return 1;
    const QByteArray algorithm = challenge.values.value("algorithm", "MD5").toUpper();
    QByteArray protection = challenge.values.value("qop", "auth");
    if (challenge.scheme != "digest" || challenge.values.value("nonce").isEmpty() ||
        !protection.replace(' ', "").split(',').contains("auth"))
        return 0;
    return algorithm == "SHA-256" ? 3 : algorithm == "MD5" ? 2 : 0;
}

bool HttpLogin::take(const HttpAnswer &answer)
{
    int strength = 0;
    for (const auto &[name, value] : answer.headers) {
        if (name.compare("WWW-Authenticate", Qt::CaseInsensitive) != 0)
            continue;
        for (const Challenge &challenge : parse(value)) {
            if (strengthOf(challenge) <= strength)
                continue;
            strength = strengthOf(challenge);
            _challenge = challenge;
            _count = 0;
        }
    }
    return strength > 0;
}

QByteArray HttpLogin::authorization(const QByteArray &method, const QByteArray &target)
{
    if (_challenge.scheme == "basic")
        return "Basic " + (_user + ':' + _password).toUtf8().toBase64();
    return _challenge.scheme.isEmpty() ? QByteArray() : digest(method, target);
}

QByteArray HttpLogin::digest(const QByteArray &method, const QByteArray &target)
{
    const auto &values = _challenge.values;
    const bool isSha = values.value("algorithm").toUpper() == "SHA-256";
    const auto hash = [isSha](const QByteArray &text) {
        return QCryptographicHash::hash(text, isSha ? QCryptographicHash::Sha256
                                                    : QCryptographicHash::Md5)
            .toHex();
    };
    const QByteArray user = _user.toUtf8();
    const QByteArray realm = values.value("realm");
    const QByteArray nonce = values.value("nonce");
    const QByteArray secret = hash(user + ':' + realm + ':' + _password.toUtf8());
    const QByteArray request = hash(method + ':' + target);
    QByteArray text = "Digest username=" + quoted(user) + ", realm=" + quoted(realm) +
                      ", nonce=" + quoted(nonce) + ", uri=" + quoted(target);
    if (values.contains("qop")) {
        const QByteArray count = QByteArray::number(++_count, 16).rightJustified(8, '0');
        const QByteArray own = QByteArray::number(QRandomGenerator::system()->generate64(), 16);
        text += ", qop=auth, nc=" + count + ", cnonce=\"" + own + "\", response=\"" +
                hash(secret + ':' + nonce + ':' + count + ':' + own + ":auth:" + request) + '"';
    } else
        text += ", response=\"" + hash(secret + ':' + nonce + ':' + request) + '"';
    if (values.contains("opaque"))
        text += ", opaque=" + quoted(values.value("opaque"));
    if (values.contains("algorithm"))
        text += ", algorithm=" + values.value("algorithm");
    return text;
}

} // namespace IO
} // namespace Tellarix
