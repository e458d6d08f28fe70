// SPDX-License-Identifier: LGPL-3.0-or-later

#include "aboutwidget.h"

#include <tellarix/client/system/application.h>

#include <QPixmap>
#include <QUrl>

namespace Norvu {
namespace Gui {

namespace {

const char *const MakerPage = "https://norvu.example.org";
const char *const ContactAddress = "norvu@example.org";

QString applicationName()
{
    const auto *application = Tellarix::System::Application::Instance();
    return application ? QString::fromStdString(application->name()) : QString();
}

} // namespace

AboutWidget::AboutWidget(QWidget *parent, Qt::WindowFlags flags) : QDialog(parent, flags)
{
    _ui.setupUi(this);
    _ui.labelLogo->setText(
        QStringLiteral("<a href=\"%1\"><img src=\":/norvu/gui/icons/norvu.png\"/></a>")
            .arg(QLatin1String(MakerPage)));
    _ui.labelLogo->setToolTip(QLatin1String(MakerPage));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowIcon(QIcon(QPixmap(QStringLiteral(":/norvu/gui/icons/norvulogo.png"))));
}

AboutWidget::~AboutWidget() = default;

void AboutWidget::setVersion(const QString &version)
{
    _ui.labelVersion->setText(version);
}

void AboutWidget::setFrameworkVersion(const QString &version)
{
    _ui.labelFrameworkVersion->setText(version);
}

void AboutWidget::show(int tabIndex)
{
    updateMailLink();
    if (tabIndex > 0 && tabIndex < _ui.tabWidget->count() && _ui.tabWidget->widget(tabIndex))
        _ui.tabWidget->setCurrentIndex(tabIndex);
    QDialog::show();
}

void AboutWidget::show()
{
    show(0);
}

void AboutWidget::done(int r)
{
    QDialog::done(r);
}

void AboutWidget::updateMailLink()
{
    QString subject = applicationName();
    if (subject.isEmpty())
        subject = QStringLiteral("norvu application");
    const QString version = _ui.labelVersion->text();
    if (version.length() > 1)
        subject += QStringLiteral(" (%1)").arg(version);

    const QByteArray query = QUrl::toPercentEncoding(QStringLiteral("About ") + subject);
    const QString address = QLatin1String(ContactAddress);
    _ui.labelMailTo->setText(QStringLiteral("<a href=\"mailto:%1?subject=%2\">%1</a>")
                                 .arg(address, QString::fromLatin1(query)));
}

} // namespace Gui
} // namespace Norvu
