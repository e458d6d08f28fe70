// SPDX-License-Identifier: LGPL-3.0-or-later

// Makes a page of HTML of a text in Markdown while the programs are built: guidepage TEXT PAGE

#include <QFile>
#include <QGuiApplication>
#include <QTextDocument>

#include <cstdio>

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    if (argc != 3) {
        std::fputs("usage: guidepage TEXT PAGE\n", stderr);
        return 2;
    }

    QFile text(QString::fromLocal8Bit(argv[1]));
    QFile page(QString::fromLocal8Bit(argv[2]));
    if (!text.open(QIODevice::ReadOnly) || !page.open(QIODevice::WriteOnly)) {
        std::fprintf(stderr, "guidepage: %s can't be made of %s\n", argv[2], argv[1]);
        return 1;
    }

    QTextDocument document;
    document.setDefaultFont(QFont(QStringLiteral("sans-serif")));
    document.setMarkdown(QString::fromUtf8(text.readAll()));
    const QByteArray html = document.toHtml("utf-8").toUtf8();
    return page.write(html) == html.size() && page.flush() ? 0 : 1;
}
