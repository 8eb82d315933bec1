#pragma once
// Icons of files by their type. The type comes from the name alone (the MIME database's
// glob patterns, never the content), then the theme is asked for the type's icon, its
// generic icon, and else the plain document icon. Lookups are cached per name ending
// and per type, so a row's icon costs two hash look-ups. A name ending seen for the
// first time shows the plain icon at once; its type is looked up in the background (the
// MIME database is read from disk on first use) and changed() tells the views to draw
// again.

#include "fs/dir_node.h"
#include "services/background_work.h"

#include <QHash>
#include <QIcon>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTimer>

class FileIcons : public QObject {
    Q_OBJECT
public:
    explicit FileIcons(QObject* parent = nullptr);

    // The process's service (created on first use, from the main thread; never destroyed,
    // so quitting waits for none of its look-ups).
    static FileIcons& shared();

    // The icon for a file named `name` (bytes as the file system gives them). Main thread.
    QIcon iconFor(const std::string& name);
    // The theme icon chosen for the name's type: "" while unknown or for the fallback.
    QString themeNameFor(const std::string& name);
    // The plain document icon given to unknown types.
    static QIcon fallback();

    // The theme icon names of a file name's type, best first: the type's own icon, then
    // its generic one. Empty for a name whose type is not known. Any thread.
    static QStringList typeIconNames(const QString& name);
    // The key the cache keeps a name under: its last two endings ("tar.gz", "png"), or
    // the whole name when it has none ("Makefile").
    static QString endingKey(const QString& name);

    void waitForDone() { m_work.waitForDone(); }

signals:
    // Types of newly seen endings are known: draw the rows again.
    void changed();

private:
    struct Type {
        QString mime; // "" when unknown
        QStringList iconNames;
    };
    // The cached type of `key`; nothing while it is looked up (and a look-up is queued).
    const Type* typeOf(const QString& key, const QString& name);
    QIcon iconOfType(const Type& type);

    QHash<QString, Type> m_types;       // ending key -> type
    QHash<QString, QIcon> m_icons;      // MIME type -> icon
    QHash<QString, QString> m_names;    // MIME type -> chosen theme name ("" fallback)
    QSet<QString> m_pending;            // ending keys being looked up
    QTimer m_announce; // one announcement per burst of look-ups
    BackgroundWork m_work;
};

// The icon of a row: the type's icon for a file, else as iconForNode (folders, drives,
// home). Main thread.
QIcon fileIconFor(const DirNode& node);
