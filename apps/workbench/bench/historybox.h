// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QComboBox>
#include <QStringList>
#include <QTimer>

namespace Workbench {

/**
 * An input for a text form, such as that of a filter, with presets and the texts used last.
 *
 * What is typed counts once Return is pressed; what is wrong with it is shown beside the text,
 * which stays as it is.
 */
class HistoryBox : public QComboBox
{
    Q_OBJECT

public:
    /** @param settingsKey  where the texts used last are kept */
    HistoryBox(const QStringList &presets, const QString &settingsKey, QWidget *parent = nullptr);

    /** Keeps a text for the list; the oldest one goes. */
    void remember(const QString &text);
    /** What the tool tip says as long as there is no problem. */
    void setHelp(const QString &help);
    /** Colours the text and explains it in the tool tip; an empty message takes both away.
     *  @param column  where the cursor goes, counted from 1; 0 leaves it */
    void showProblem(const QString &message, int column = 0);

    void restoreHistory();
    void saveHistory() const;

signals:
    /** A text was confirmed by Return or chosen from the list; without white space around it. */
    void entered(const QString &text);
    /** Esc was pressed: whoever knows where the user came from moves the focus there. */
    void left();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void enter();

private:
    void fillList();

    QStringList _presets;
    QStringList _history;
    QString _settingsKey;
    QString _help;
    QTimer _entered; /**< runs until the event that entered a text is through */
};

} // namespace Workbench
