#include "fingerprintreader.h"

FingerprintReader::FingerprintReader(QObject *parent)
    : QObject(parent)
{}
