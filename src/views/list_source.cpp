#include "views/list_source.h"

#include "fs/fmt.h"
#include "window/file_icons.h"

#include <QFile>

int ListSource::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

std::vector<DirNodePtr> ListSource::shown(const DirNodePtr& node) const
{
    if (node == rootNode())
        return topRows();
    return childRows(*node);
}

std::vector<DirNodePtr> ListSource::topRows() const
{
    std::vector<DirNodePtr> rows = headers();
    std::vector<DirNodePtr> own = childRows(*rootNode());
    rows.insert(rows.end(), own.begin(), own.end());
    return rows;
}

bool ListSource::expandable(const DirNode& node) const
{
    return node.isDir || node.isSectionHeader;
}

QVariant ListSource::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const DirNode& node = *itemAt(index)->node;
    if (node.isSectionHeader) {
        if (index.column() != Name)
            return {};
        if (role == Qt::DisplayRole)
            return QFile::decodeName(node.name.c_str());
        return headerStyle(node, role);
    }
    if (role == Qt::DecorationRole && index.column() == Name)
        return fileIconFor(node);
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    switch (index.column()) {
    case Name:
        return QFile::decodeName(node.name.c_str());
    case Date:
        return node.dateModified ? QString::fromStdString(dateFmt(*node.dateModified)) : QString();
    case Size:
        return infoText(node);
    case Kind:
        return node.kind.empty() ? QStringLiteral("Folder") : QString::fromStdString(node.kind);
    }
    return {};
}

QVariant ListSource::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Name: return QStringLiteral("Name");
    case Date: return QStringLiteral("Date Modified");
    case Size: return QStringLiteral("Size");
    case Kind: return QStringLiteral("Kind");
    }
    return {};
}
