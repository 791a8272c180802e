#pragma once

#include <QByteArray>
#include <QString>

/// The whole of a file of /proc or /sys, trimmed; empty when it cannot be read.
QByteArray readSystemFile(const QString &path);

/// The system's list of PCI names (package pci.ids); empty when there is none.
QByteArray readPciIds();
