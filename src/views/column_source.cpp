#include "views/column_source.h"


#include <QFile>

int ColumnSource::columnCount(const QModelIndex&) const
{
    return 1;
}

std::vector<DirNodePtr> ColumnSource::topNodes() const
{
    // The favourites appear only in the first column, flattened above the contents.
    std::vector<DirNodePtr> rows;
    for (const auto& header : headers()) {
        rows.push_back(header);
        rows.insert(rows.end(), header->children.begin(), header->children.end());
    }
    return rows;
}

QString ColumnSource::rowText(const Row& row) const
{
    QString name = row.name();
    if (row.isHeader())
        return name;
    QString info = infoText(row);
    if (info.isEmpty())
        return name;
    return name + QStringLiteral("  (") + info + QStringLiteral(")");
}

QVariant ColumnSource::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const Row row = rowAt(index);
    if (role == Qt::DisplayRole)
        return rowText(row);
    if (role == Qt::EditRole) // the name alone, for renaming
        return row.isHeader() ? QVariant() : QVariant(row.name());
    if (row.isHeader())
        return headerStyle(*row.node, role);
    if (role == Qt::DecorationRole)
        return icon(row);
    return {};
}
