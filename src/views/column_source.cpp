#include "views/column_source.h"

#include "window/file_icons.h"

#include <QFile>

int ColumnSource::columnCount(const QModelIndex&) const
{
    return 1;
}

std::vector<DirNodePtr> ColumnSource::topRows() const
{
    // The favourites appear only in the first column, flattened above the contents.
    std::vector<DirNodePtr> rows;
    for (const auto& header : headers()) {
        rows.push_back(header);
        rows.insert(rows.end(), header->children.begin(), header->children.end());
    }
    std::vector<DirNodePtr> own = childRows(*rootNode());
    rows.insert(rows.end(), own.begin(), own.end());
    return rows;
}

bool ColumnSource::expandable(const DirNode& node) const
{
    return node.isDir;
}

QString ColumnSource::rowText(const DirNode& node) const
{
    QString name = QFile::decodeName(node.name.c_str());
    if (node.isSectionHeader)
        return name;
    QString info = infoText(node);
    if (info.isEmpty())
        return name;
    return name + QStringLiteral("  (") + info + QStringLiteral(")");
}

QVariant ColumnSource::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const DirNode& node = *itemAt(index)->node;
    if (role == Qt::DisplayRole)
        return rowText(node);
    if (node.isSectionHeader)
        return headerStyle(node, role);
    if (role == Qt::DecorationRole)
        return fileIconFor(node);
    return {};
}
