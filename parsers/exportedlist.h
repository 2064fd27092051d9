#pragma once

#include <QList>

/**
 * Instantiates the QList functions that belong to the library's binary interface, so that they are exported whatever
 * the compiler inlines. Not for Qt 6, whose QList does not define all of them itself.
 */
#if QT_VERSION_MAJOR < 6
#define EXPORT_LIST(Item)                                                                                              \
    template void QList<Item>::append(const Item &);                                                                   \
    template QList<Item>::QList(const QList<Item> &);                                                                  \
    template QList<Item>::~QList()
#else
#define EXPORT_LIST(Item) static_assert(true)
#endif
