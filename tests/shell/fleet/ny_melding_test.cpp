// The dialog in which a message is written.
#include "shell/fleet/ny_melding.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTemporaryDir>

#include "shell/fleet/html_pane.h"
#include "tests/shell/modal.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

const QDateTime kNow(QDate(2026, 3, 7), QTime(9, 5));

class NewMessage : public testing::Test {
protected:
    NewMessage()
        : dialog(folder.path() + u'/', kNow,
                 {.confirm =
                      [this](const QString& question) {
                          asked << question;
                          return yes;
                      },
                  .tell = [this](const QString& fault) { told << fault; },
                  .chooseFile =
                      [this](const QString& title, const QString& filter) {
                          asked << title + u'|' + filter;
                          return chosen;
                      }}) {}

    template <typename Widget>
    Widget& field(const char* name) {
        return child<Widget>(dialog, name);
    }
    void fillIn() {
        field<QLineEdit>("edMe_Tittel").setText("Åpent");
        field<QLineEdit>("edMe_Til").setText("Alle");
        field<QLineEdit>("edMe_Fra").setText("Kontoret");
    }
    QString file(const char* name, const QByteArray& content) const {
        QFile made(folder.filePath(QString::fromUtf8(name)));
        EXPECT_TRUE(made.open(QIODevice::WriteOnly));
        made.write(content);
        return made.fileName();
    }
    [[nodiscard]] HtmlPane& page() { return field<HtmlPane>("page"); }

    QTemporaryDir folder;
    QStringList asked;
    QStringList told;
    bool yes = true;
    QString chosen;
    TfrmNyMelding dialog;
};

TEST_F(NewMessage, HasItsFieldsAndPresets) {
    EXPECT_EQ(dialog.windowTitle(), "Ny melding");
    QStringList labels;
    for (const QLabel* label : dialog.findChildren<QLabel*>()) labels << label->text();
    for (const char* label : {"Overskrift", "Til", "Fra", "Melding ", "Prioritet", "Utløpstidspunkt"})
        EXPECT_TRUE(labels.contains(QString::fromUtf8(label))) << label;
    for (const char* name : {"edMe_Tittel", "edMe_Til", "edMe_Fra"}) EXPECT_EQ(field<QLineEdit>(name).maxLength(), 100);
    EXPECT_EQ(field<QLineEdit>("edMe_Til").placeholderText(), "(F.eks. Alle eller Butikksjef)");
    EXPECT_EQ(field<QCheckBox>("cbHtml").text(), "Send som HTML");
    EXPECT_EQ(field<QCheckBox>("cbDisplayOnPosFront").text(), "Skal vises på TorvikPOS startskjerm");
    EXPECT_EQ(field<QSpinBox>("sePrioritet").minimum(), 1);
    EXPECT_EQ(field<QSpinBox>("sePrioritet").maximum(), 3);
    EXPECT_EQ(field<QSpinBox>("sePrioritet").value(), 3);
    EXPECT_EQ(field<QDateTimeEdit>("deExpiry").dateTime(), kNow.addDays(1));
}

TEST_F(NewMessage, ShowsPriorityAndExpiryForTheStartScreenAlone) {
    dialog.show();
    for (const bool on : {false, true, false}) {
        field<QCheckBox>("cbDisplayOnPosFront").setChecked(on);
        EXPECT_EQ(field<QWidget>("sePrioritet").isVisible(), on);
        EXPECT_EQ(field<QWidget>("deExpiry").isVisible(), on);
    }
}

TEST_F(NewMessage, AsksBeforeItIsSentAndGivesWhatIsFilledIn) {
    whenAsked<TfrmNyMelding>([this](TfrmNyMelding& shown) {
        fillIn();
        field<QPlainTextEdit>("meMelding").setPlainText("Hei\n'hopp'");
        field<QCheckBox>("cbDisplayOnPosFront").setChecked(true);
        field<QSpinBox>("sePrioritet").setValue(1);
        press(shown, "ok");
    });
    EXPECT_TRUE(dialog.Execute());
    EXPECT_EQ(asked, QStringList{"Skal meldingen sendes?"});
    const InstantMessage message = dialog.message();
    EXPECT_EQ(message.Tittel, "Åpent");
    EXPECT_EQ(message.Til, "Alle");
    EXPECT_EQ(message.Fra, "Kontoret");
    EXPECT_EQ(message.Melding, "Hei\n'hopp'");
    EXPECT_TRUE(message.DisplayOnPosFront);
    EXPECT_EQ(message.Prioritet, 1);
    EXPECT_EQ(message.Expiry, kNow.addDays(1));
}

TEST_F(NewMessage, StaysOpenWhenTheAnswerIsNo) {
    yes = false;
    fillIn();
    whenAsked<TfrmNyMelding>([](TfrmNyMelding& shown) {
        press(shown, "ok");
        EXPECT_TRUE(shown.isVisible());
        press(shown, "cancel");
    });
    EXPECT_FALSE(dialog.Execute());
    EXPECT_EQ(asked.size(), 1);
}

TEST_F(NewMessage, TellsTheFirstFieldThatIsMissingAndStaysOpen) {
    dialog.show();
    const struct {
        const char* field;
        const char* fault;
    } faults[]{{"edMe_Fra", "Du må oppgi hvem meldingen er fra."},
               {"edMe_Til", "Du må oppgi hvem meldingen er til."},
               {"edMe_Tittel", "Meldingen må ha en tittel."}};
    fillIn();
    for (const auto& [name, fault] : faults) {
        field<QLineEdit>(name).setText("  ");
        press(dialog, "ok");
        EXPECT_EQ(told.last(), QString::fromUtf8(fault));
        EXPECT_TRUE(dialog.isVisible());
    }
    EXPECT_EQ(told.size(), 3);
    EXPECT_EQ(asked, QStringList()) << "nothing is asked of a message that is not whole";
}

TEST_F(NewMessage, ReadsItsTextFromAFile) {
    chosen = file("hei.txt", "Linje \xE6\r\nto\r\n");
    dialog.show();
    press(dialog, "readFile");
    EXPECT_EQ(asked, QStringList{"Åpne fil|Tekst filer (*.txt)"});
    EXPECT_EQ(dialog.message().Melding, "Linje æ\nto");
    chosen.clear();
    press(dialog, "readFile");
    EXPECT_EQ(dialog.message().Melding, "Linje æ\nto");
    chosen = folder.filePath("borte.txt");
    press(dialog, "readFile");
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.first().startsWith("Klarte ikke å lese "));
}

TEST_F(NewMessage, BeginsAPageWithTheStandardOne) {
    dialog.show();
    field<QCheckBox>("cbHtml").setChecked(true);
    EXPECT_FALSE(field<QWidget>("meMelding").isVisible());
    EXPECT_TRUE(page().isVisible());
    const QString standard =
        "<html>\n<body>\n<p><b>TorvikPOSSync standard side</b></p>\n<p>Skriv inn en melding, eller trykk på "
        "knappen</p>\n<p>\"Les fra fil\" for å åpne et eksisterende Html dokument.</p>\n</body>\n</html>\n";
    QFile written(folder.filePath("TorvikPOSSync.htm"));
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), "\xEF\xBB\xBF" + standard.toUtf8());
    EXPECT_EQ(dialog.message().Melding, standard) << "the page's own source, until somebody writes in it";
    EXPECT_TRUE(page().toPlainText().startsWith("TorvikPOSSync standard side\nSkriv inn en melding"));
    field<QCheckBox>("cbHtml").setChecked(false);
    EXPECT_TRUE(field<QWidget>("meMelding").isVisible());
    EXPECT_EQ(dialog.message().Melding, "");
}

TEST_F(NewMessage, PageCanBeWrittenInAndIsSentAsItsSource) {
    dialog.show();
    field<QCheckBox>("cbHtml").setChecked(true);
    page().selectAll();
    QTest::keyClicks(&page(), "Nye priser");
    const QString source = dialog.message().Melding;
    EXPECT_TRUE(source.contains("<html>")) << source.toStdString();
    EXPECT_TRUE(source.contains("Nye priser"));
    EXPECT_FALSE(source.contains("standard side"));
    field<QCheckBox>("cbHtml").setChecked(false);
    field<QCheckBox>("cbHtml").setChecked(true);
    EXPECT_EQ(dialog.message().Melding, source) << "the pane is made once";
}

TEST_F(NewMessage, PageCanBeReadFromAFileInItsOwnCoding) {
    const QByteArray latin = "<html><head><meta charset=\"iso-8859-1\"></head><body><p>P\xE5ske</p></body></html>";
    chosen = file("side.htm", latin);
    dialog.show();
    field<QCheckBox>("cbHtml").setChecked(true);
    press(dialog, "readFile");
    EXPECT_EQ(asked, QStringList{"Åpne fil|HTML filer (*.htm)"});
    EXPECT_EQ(page().toPlainText(), "Påske");
    EXPECT_EQ(dialog.message().Melding, QString::fromLatin1(latin));
}

TEST_F(NewMessage, StaysPlainWhereThePageCannotBeWritten) {
    TfrmNyMelding nowhere(folder.filePath("finnes/ikke/"), kNow,
                          {.tell = [this](const QString& fault) { told << fault; }});
    child<QCheckBox>(nowhere, "cbHtml").setChecked(true);
    EXPECT_FALSE(child<QCheckBox>(nowhere, "cbHtml").isChecked());
    EXPECT_EQ(told.size(), 1);
    EXPECT_EQ(nowhere.message().Melding, "");
}

}  // namespace
}  // namespace torvik::test
