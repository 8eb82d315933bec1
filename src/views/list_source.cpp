#include "views/list_source.h"

#include "fs/fmt.h"

#include <QFile>

int ListSource::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

QVariant ListSource::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const Row row = rowAt(index);
    if (row.isHeader()) {
        if (index.column() != Name)
            return {};
        if (role == Qt::DisplayRole)
            return row.name();
        return headerStyle(*row.node, role);
    }
    if (role == Qt::DecorationRole && index.column() == Name)
        return icon(row);
    if (role == Qt::EditRole)
        return index.column() == Name ? QVariant(row.name()) : QVariant();
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    switch (index.column()) {
    case Name:
        return row.name();
    case Date: {
        const std::optional<int64_t> date = row.date();
        return date ? QString::fromStdString(dateFmt(*date)) : QString();
    }
    case Size:
        return infoText(row);
    case Kind:
        return row.kind();
    }
    return {};
}

QVariant ListSource::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Name: return tr("Name");
    // The key the folder is sorted by says so while its values are still being read.
    case Date: return sortPending() ? tr("Date Modified \u2026") : tr("Date Modified");
    case Size: return sortPending() ? tr("Size \u2026") : tr("Size");
    case Kind: return tr("Kind");
    }
    return {};
}
