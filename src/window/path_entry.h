#pragma once
// The location field of a browser window (Ctrl+L): a line over the active pane's header
// where a path is typed, with the folder names of the typed folder offered as
// completions. The typed folder is read in the background, and a reading that arrives
// after the user has typed on into another folder is dropped. Enter goes there once a
// background check has found a folder ("~" is the home folder; a relative path starts
// at the pane's folder); otherwise the field says why and stays open. Escape closes it.

#include "services/browser_context.h"

#include <QFrame>

#include <cstdint>
#include <string>

class QCompleter;
class QLabel;
class QLineEdit;
class QStringListModel;

// Names the clear button of a text field (Qt's has no name of its own, so a screen
// reader would announce nothing) and describes it.
void fieldNameClearButton(QLineEdit& field, const QString& description);

class PathEntry : public QFrame {
    Q_OBJECT
public:
    explicit PathEntry(const BrowserContext& context, QWidget* parent = nullptr);
    ~PathEntry() override;

    // Shows the field over `where` (parent coordinates) holding `location`, all selected;
    // relative paths then start at `location`.
    void open(const std::string& location, const QRect& where);
    void close();

    QLineEdit* edit() const { return m_edit; }
    QString errorText() const;
    // The completions offered for the folder typed so far.
    QStringList candidates() const;
    // The folder whose names the completions hold ("" none yet).
    const std::string& listedFolder() const { return m_listed; }

signals:
    void navigateRequested(const std::string& path);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QMetaObject::Connection m_focusLink; // cut before the children go: their focus change must not reach us
    void edited(const QString& text);
    void submit();
    void showError(const QString& text);
    enum class Focus { BackToWindow, Stay };
    void dismiss(Focus focus);

    const BrowserContext& m_context;
    QLineEdit* m_edit = nullptr;
    QLabel* m_error = nullptr;
    QCompleter* m_completer = nullptr;
    QStringListModel* m_names = nullptr;
    std::string m_base;
    std::string m_listed;
    bool m_listedHidden = false; // the listing holds hidden folders too
    int64_t m_listGeneration = 0;
    int64_t m_checkGeneration = 0;
};

// The absolute path (bytes) a typed text names: "~" and "~/..." under `home`, a
// relative text under `base`; the text is encoded as the file system's names are.
std::string pathEntryResolve(const QString& typed, const std::string& base, const std::string& home);

// The text up to and with its last "/" ("~/Pro" -> "~/"), which names the folder whose
// entries complete the rest; "" when there is no "/".
QString pathEntryFolderPart(const QString& typed);
