#include "textio/regularfile.h"

#include <QFile>
#include <QFileInfo>

bool OpenRegularFile(QFile &file)
{
    return QFileInfo(file).isFile() && file.open(QIODevice::ReadOnly);
}
