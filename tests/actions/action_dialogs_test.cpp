// The real name prompt: OK gives the trimmed text, an empty answer or Cancel gives none.

#include "../window/gui_test_main.h"
#include "actions/action_dialogs.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

class ActionDialogsTest : public QObject {
    Q_OBJECT
private slots:
    void promptAnswers_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("answer"); // "-" for none
        QTest::newRow("trimmed") << " \tWork \n" << true << "Work";
        QTest::newRow("blank") << "   " << true << "-";
        QTest::newRow("cancel") << "Work" << false << "-";
    }

    void promptAnswers()
    {
        QFETCH(QString, typed);
        QFETCH(bool, ok);
        QFETCH(QString, answer);
        QString shownValue;
        QSize fieldSize;
        // Answers the dialog once its own event loop runs.
        QTimer::singleShot(0, this, [&] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            auto* field = dialog->findChild<QLineEdit*>();
            shownValue = field->text();
            fieldSize = field->size();
            field->setText(typed);
            auto* buttons = dialog->findChild<QDialogButtonBox*>();
            buttons->button(ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel)->click();
        });
        const auto result = ctxPrompt(nullptr, QStringLiteral("New Section"), QStringLiteral("Name:"), "Old");
        QCOMPARE(shownValue, QStringLiteral("Old"));
        QCOMPARE(fieldSize, QSize(260, 24));
        QCOMPARE(result.value_or(QStringLiteral("-")), answer);
    }
};

BRONDEL_GUI_TEST_MAIN(ActionDialogsTest)
#include "action_dialogs_test.moc"
