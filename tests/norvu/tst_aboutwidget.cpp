#include <norvu/gui/aboutwidget.h>

#include <tellarix/client/system/application.h>

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QtTest>

using Norvu::Gui::AboutWidget;

namespace {

QString text(const AboutWidget &dialog, const char *label)
{
    return dialog.findChild<QLabel *>(QLatin1String(label))->text();
}

} // namespace

class AboutWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void namesVersionInMailSubject_data();
    void namesVersionInMailSubject();
    void namesApplicationInMailSubject();
    void choosesTab_data();
    void choosesTab();
    void closesWithButton();
    void showsPictures();
    void carriesIconsForHosts();
};

void AboutWidgetTest::namesVersionInMailSubject_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("subject");

    QTest::newRow("none") << QString() << "About%20norvu%20application";
    QTest::newRow("one character") << "7"
                                   << "About%20norvu%20application";
    QTest::newRow("version") << "1.2"
                             << "About%20norvu%20application%20%281.2%29";
    QTest::newRow("marks of a URL") << "1&2?"
                                    << "About%20norvu%20application%20%281%262%3F%29";
}

void AboutWidgetTest::namesVersionInMailSubject()
{
    QFETCH(QString, version);
    QFETCH(QString, subject);

    AboutWidget dialog;
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    dialog.setVersion(version);
    dialog.show();
    QCOMPARE(text(dialog, "labelMailTo"),
             QStringLiteral("<a href=\"mailto:norvu@example.org?subject=%1\">norvu@example.org</a>")
                 .arg(subject));
}

void AboutWidgetTest::namesApplicationInMailSubject()
{
    char program[] = "/usr/bin/picker";
    char *arguments[] = {program, nullptr};
    int count = 1;
    Tellarix::System::Application application(count, arguments);

    AboutWidget dialog;
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    dialog.setVersion(QStringLiteral("2.0"));
    dialog.setFrameworkVersion(QStringLiteral("5.1.2"));
    dialog.show(0);
    QVERIFY(text(dialog, "labelMailTo").contains("subject=About%20picker%20%282.0%29"));
    QCOMPARE(text(dialog, "labelVersion"), QStringLiteral("2.0"));
    QCOMPARE(text(dialog, "labelFrameworkVersion"), QStringLiteral("5.1.2"));
}

void AboutWidgetTest::choosesTab_data()
{
    QTest::addColumn<int>("asked");
    QTest::addColumn<int>("current");

    QTest::newRow("first keeps current") << 0 << 1;
    QTest::newRow("negative keeps current") << -1 << 1;
    QTest::newRow("one past the end") << 3 << 1;
    QTest::newRow("last") << 2 << 2;
}

void AboutWidgetTest::choosesTab()
{
    QFETCH(int, asked);
    QFETCH(int, current);

    AboutWidget dialog;
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    auto *tabs = dialog.findChild<QTabWidget *>(QStringLiteral("tabWidget"));
    QVERIFY(tabs);
    QCOMPARE(tabs->count(), 1);
    tabs->addTab(new QWidget, QStringLiteral("Licence"));
    tabs->addTab(new QWidget, QStringLiteral("Thanks"));
    tabs->setCurrentIndex(1);

    dialog.show(asked);
    QVERIFY(dialog.isVisible());
    QCOMPARE(tabs->currentIndex(), current);
}

void AboutWidgetTest::closesWithButton()
{
    QPointer<AboutWidget> dialog(new AboutWidget);
    dialog->show();
    QSignalSpy spy(dialog, SIGNAL(accepted()));
    QVERIFY(spy.isValid());
    QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("buttonOk")), Qt::LeftButton);
    QCOMPARE(spy.count(), 1);
    QTRY_VERIFY(!dialog);
}

void AboutWidgetTest::showsPictures()
{
    AboutWidget dialog;
    QVERIFY(!dialog.windowIcon().isNull());
    const QString logo = text(dialog, "labelLogo");
    QVERIFY(logo.contains(QStringLiteral("src=\":/norvu/gui/icons/norvu.png\"")));
    QVERIFY(!QPixmap(QStringLiteral(":/norvu/gui/icons/norvu.png")).isNull());
    QVERIFY(dialog.findChild<QLabel *>(QStringLiteral("labelLogo"))->openExternalLinks());
}

void AboutWidgetTest::carriesIconsForHosts()
{
    const QString folder = QStringLiteral(":/norvu/gui/icons/");
    for (const char *name : {"epicenter",
                             "depth",
                             "magnitude",
                             "fault",
                             "gps",
                             "tidegauge",
                             "play",
                             "view-filter",
                             "view-calendar-day",
                             "filesaveas",
                             "fileclose",
                             "64x64/play",
                             "64x64/pause",
                             "64x64/stop",
                             "64x64/fastforward",
                             "64x64/reload",
                             "64x64/rss",
                             "64x64/spinner",
                             "64x64/play-history",
                             "64x64/pause-history",
                             "64x64/stop-history"}) {
        const QImage icon(folder + QLatin1String(name) + QStringLiteral(".png"));
        const int size = QByteArray(name).startsWith("64x64") ? 64 : 32;
        QVERIFY2(icon.size() == QSize(size, size), name);
        QVERIFY2(icon.hasAlphaChannel(), name);
    }
}

QTEST_MAIN(AboutWidgetTest)
#include "tst_aboutwidget.moc"
