#pragma once

#include <shared/templatedata.h>

typedef struct _GPtrArray GPtrArray;
typedef struct _FpDevice FpDevice;
typedef struct _FpPrint FpPrint;

// The stored libfprint prints of the people who may confirm, as the library wants them for
// identification: deserialized, each knowing its owner. A template the library can't read (a
// damaged blob, a print of a newer library) or one made by another kind of reader is left
// out and logged: one bad template must not keep the others from confirming.
class LibfprintGallery
{
public:
    LibfprintGallery(const zeral::TEMPLATES_HASH &templates, FpDevice *device);
    ~LibfprintGallery();
    LibfprintGallery(const LibfprintGallery &) = delete;
    LibfprintGallery &operator=(const LibfprintGallery &) = delete;

    int size() const;
    bool isEmpty() const { return size() == 0; }
    // The prints, owned by the gallery.
    GPtrArray *prints() const { return m_prints; }
    // The owner of one of the gallery's prints; 0 for any other.
    static zeral::TYPE_ID ownerOf(FpPrint *print);

private:
    GPtrArray *m_prints;
};
