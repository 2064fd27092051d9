#pragma once

class QFile;

/**
 * Opens a file for reading; anything else of that name, as a pipe that would keep the host waiting or a device without an
 * end, counts as a file that is not there.
 */
bool OpenRegularFile(QFile &file);
