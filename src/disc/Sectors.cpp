#include "Sectors.h"

#include "Edc.h"

namespace vindaro::disc {

namespace {

constexpr int kSubmodeForm2 = 0x20;

quint32 storedEdc(const char* at)
{
    const auto byte = [at](int i) { return quint32(static_cast<quint8>(at[i])); };
    return byte(0) | (byte(1) << 8) | (byte(2) << 16) | (byte(3) << 24);
}

} // namespace

Mode2Sector inspectMode2Sector(const char* sector)
{
    Mode2Sector s;
    s.form2 = (static_cast<quint8>(sector[2]) & kSubmodeForm2) != 0;
    const qint64 covered = s.form2 ? kMode2SectorBytes - 4 : kSubheaderBytes + kDataSectorBytes;
    const quint32 stored = storedEdc(sector + covered);
    s.edcRecorded = !s.form2 || stored != 0;
    s.good = !s.edcRecorded || stored == sectorEdc(sector, covered);
    return s;
}

DataSector inspectRawDataSector(const char* raw, qint64& offset)
{
    switch (static_cast<quint8>(raw[15])) {
    case 1: {
        constexpr qint64 kCovered = 16 + kDataSectorBytes;
        offset = 16;
        return storedEdc(raw + kCovered) == sectorEdc(raw, kCovered) ? DataSector::Good
                                                                     : DataSector::EdcMismatch;
    }
    case 2: {
        const Mode2Sector s = inspectMode2Sector(raw + 16);
        if (s.form2)
            return DataSector::NotData;
        offset = 16 + kSubheaderBytes;
        return s.good ? DataSector::Good : DataSector::EdcMismatch;
    }
    default:
        return DataSector::NotData;
    }
}

} // namespace vindaro::disc
