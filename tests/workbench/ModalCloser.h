#pragma once
#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>

// Answers the message boxes that open while it lives: records each one's
// text and informative text, ticks its verification box when asked, and
// presses Answer.
class ModalCloser : public QObject
{
public:
    explicit ModalCloser(QMessageBox::StandardButton Button = QMessageBox::Ok) : Answer(Button)
    {
        connect(&m_timer, &QTimer::timeout, this, [this] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box || !box->isVisible())
                return;
            Texts << box->text() + u'\n' + box->informativeText();
            if (box->checkBox())
                box->checkBox()->setChecked(TickVerification);
            if (QAbstractButton *button = box->button(Answer))
                button->click();
            else
                box->reject();
        });
        m_timer.start(30);
    }

    QMessageBox::StandardButton Answer;
    bool TickVerification = false;
    QStringList Texts;

private:
    QTimer m_timer;
};
