#pragma once

#include "core/store/Connection.h"
#include "core/store/DataColTable.h"

#include <QAbstractTableModel>
#include <list>
#include <optional>

namespace stellwyn::collection {

// The grid's rows of datacol: ID, ScaleID, Reading, Date, Time, in the order the sort options
// give. It holds a few pages of rows and nothing else, so its memory stays flat however many
// rows the table has: a page next to one it holds is fetched from that page's key through the
// order's index; any other page from the nearer end of the table.
class DataColModel : public QAbstractTableModel {
    Q_OBJECT
public:
    static constexpr int pageSize = 256;
    static constexpr int pagesKept = 16;

    explicit DataColModel(QObject* parent = nullptr);

    // Opens the readings file for as long as the grid is bound to it, and reads the table
    // afresh in this order.
    // allStations: on a readings server, every station's rows rather than this one's.
    void bind(const QString& connectionText, core::DataColOrder order, bool allStations = false);
    void unbind();
    // Re-runs the query: the count and every row are read again.
    void refresh(core::DataColOrder order, bool allStations = false);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // The row at this place in the order, fetched as the grid would.
    const core::DataColRow& rowAt(int row) const;

private:
    struct Page {
        int number;
        QList<core::DataColRow> rows;
    };
    const Page& page(int number) const;
    QList<core::DataColRow> fetch(int number) const;
    QList<core::DataColRow> fetchFromStore(int number) const;
    const Page* held(int number) const;

    QString text_;
    mutable std::optional<core::Connection> connection_;
    core::DataColOrder order_ = core::DataColOrder::storeOrder;
    int rows_ = 0;
    // Most recently used first.
    mutable std::list<Page> pages_;
};

} // namespace stellwyn::collection
