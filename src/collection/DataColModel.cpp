#include "DataColModel.h"

#include <algorithm>
#include <limits>

namespace stellwyn::collection {

namespace {
const QStringList kColumns = {QStringLiteral("ID"), QStringLiteral("ScaleID"),
                              QStringLiteral("Reading"), QStringLiteral("Date"),
                              QStringLiteral("Time")};
} // namespace

DataColModel::DataColModel(QObject* parent) : QAbstractTableModel(parent) {}

void DataColModel::bind(const QString& connectionText, core::DataColOrder order, bool allStations) {
    text_ = connectionText;
    connection_.reset();
    refresh(order, allStations);
}

void DataColModel::unbind() {
    beginResetModel();
    connection_.reset();
    text_.clear();
    pages_.clear();
    rows_ = 0;
    endResetModel();
}

void DataColModel::refresh(core::DataColOrder order, bool allStations) {
    beginResetModel();
    order_ = order;
    pages_.clear();
    rows_ = 0;
    try {
        if (!connection_ && !text_.isEmpty()) {
            connection_.emplace(core::Connection::open(text_));
            core::prepareReadingStore(*connection_);
        }
        if (connection_) {
            connection_->setAllStations(allStations);
            // The grid shows at most as many rows as a view can address.
            rows_ = static_cast<int>(std::min<qint64>(core::countReadings(*connection_),
                                                      std::numeric_limits<int>::max()));
        }
    } catch (const core::ServerError&) {
        // Empty until the server answers again; the status line says why. A connection that
        // broke is made afresh at the next refresh.
        connection_.reset();
    } catch (...) {
        endResetModel();
        throw;
    }
    endResetModel();
}

int DataColModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows_;
}

int DataColModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(kColumns.size());
}

QVariant DataColModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole) {
        return {};
    }
    if (orientation == Qt::Horizontal) {
        return kColumns.value(section);
    }
    return section + 1;
}

QVariant DataColModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rows_ ||
        (role != Qt::DisplayRole && role != Qt::EditRole)) {
        return {};
    }
    const core::DataColRow& row = rowAt(index.row());
    switch (index.column()) {
    case 0:
        return row.id;
    case 1:
        return row.scaleId;
    case 2:
        return row.reading;
    case 3:
        return row.date;
    case 4:
        return row.time;
    default:
        return {};
    }
}

const core::DataColRow& DataColModel::rowAt(int row) const {
    static const core::DataColRow none;
    const Page& p = page(row / pageSize);
    const int at = row % pageSize;
    // Rows deleted since the count was taken leave the page short until the next refresh.
    return at < p.rows.size() ? p.rows.at(at) : none;
}

const DataColModel::Page* DataColModel::held(int number) const {
    for (const Page& p : pages_) {
        if (p.number == number) {
            return &p;
        }
    }
    return nullptr;
}

const DataColModel::Page& DataColModel::page(int number) const {
    for (auto it = pages_.begin(); it != pages_.end(); ++it) {
        if (it->number == number) {
            pages_.splice(pages_.begin(), pages_, it);
            return pages_.front();
        }
    }
    QList<core::DataColRow> rows = fetch(number);
    pages_.push_front(Page{number, std::move(rows)});
    if (pages_.size() > pagesKept) {
        pages_.pop_back();
    }
    return pages_.front();
}

QList<core::DataColRow> DataColModel::fetch(int number) const {
    if (!connection_) {
        return {};
    }
    try {
        return fetchFromStore(number);
    } catch (const core::ServerError&) {
        // The rows stay blank until the next refresh finds the server again.
        return {};
    }
}

QList<core::DataColRow> DataColModel::fetchFromStore(int number) const {
    const qint64 first = static_cast<qint64>(number) * pageSize;
    const int count = static_cast<int>(std::min<qint64>(pageSize, rows_ - first));
    // Scrolling goes page by page: the neighbour's key leads straight to this page. A page
    // that comes short is not trusted: a null compares as unknown, so rows holding one in a
    // key column (a reading kept empty) are never found from a key and need a count instead.
    auto beside = [&](const core::DataColRow& key, bool after) {
        auto rows = core::readingsBeside(*connection_, order_, key, count, after);
        return rows && rows->size() == count ? rows : std::nullopt;
    };
    if (const Page* before = held(number - 1); before && before->rows.size() == pageSize) {
        if (auto rows = beside(before->rows.last(), true)) {
            return *rows;
        }
    }
    if (const Page* after = held(number + 1); after && !after->rows.isEmpty()) {
        if (auto rows = beside(after->rows.first(), false)) {
            return *rows;
        }
    }
    // A jump: counted from whichever end of the table is nearer.
    const qint64 fromEnd = rows_ - (first + count);
    if (fromEnd < first) {
        return core::readingsAt(*connection_, order_, fromEnd, count, true);
    }
    return core::readingsAt(*connection_, order_, first, count, false);
}

} // namespace stellwyn::collection
