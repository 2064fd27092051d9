#pragma once

#include "textio/exported.h"

#include <QList>

/**
 * Instantiates the QList functions that belong to the library's binary interface, so that they are exported whatever
 * the compiler inlines. Not for Qt 6, whose QList does not define all of them itself.
 */
#if QT_VERSION_MAJOR < 6
#define EXPORT_LIST(Item)                                                                                              \
    template SUBTITLE_EXPORT void QList<Item>::append(const Item &);                                                   \
    template SUBTITLE_EXPORT QList<Item>::QList(const QList<Item> &);                                                  \
    template SUBTITLE_EXPORT QList<Item>::~QList()
#else
#define EXPORT_LIST(Item) static_assert(true)
#endif
