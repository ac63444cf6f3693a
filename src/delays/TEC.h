#pragma once
// Four-dimensional store of one kind of ionosphere map (TEC or its RMS):
// epoch, height, latitude, longitude. One flat array, every access checked,
// so that a look-up off the grid ends the run instead of reading a neighbour.

class TEC {
public:
    /// Empty store: every access ends the run with "TEC object is not set".
    TEC();
    /// Store of nEpoch x nHght x nLat x nLon zeros.
    TEC(long nEpoch, long nHght, long nLat, long nLon);
    /// Store of nEpoch x nHght x nLat x nLon copies of value.
    TEC(long nEpoch, long nHght, long nLat, long nLon, long double value);
    TEC(const TEC& other);
    TEC& operator=(const TEC& other);
    ~TEC();

    /// Sets the shape; the content is dropped (zeros). A negative dimension
    /// or more than TECns::MaxElements elements ends the run with the
    /// class's framed error.
    void Resize(long nEpoch, long nHght, long nLat, long nLon);
    /// As Resize, then sets every element to value.
    void Resize(long nEpoch, long nHght, long nLat, long nLon, long double value);

    /// Latitude rows of one map.
    long NRow() const { return nLat; }
    /// Longitude columns of one map.
    long NCol() const { return nLon; }
    /// Epochs (maps) of the store.
    long NEpoch() const { return nEpoch; }
    /// Heights of one epoch.
    long NHeight() const { return nHght; }

    /// Element at epoch e, height h, latitude row lat, longitude column lon.
    /// An index outside its dimension, or any access to an unset store, ends
    /// the run with the class's framed error.
    long double& operator()(long e, long h, long lat, long lon);
    const long double& operator()(long e, long h, long lat, long lon) const;

private:
    long Index(long e, long h, long lat, long lon) const;
    void Allocate(long ne, long nh, long nla, long nlo);

    long nEpoch, nHght, nLat, nLon;
    long double* tec;
};

namespace TECns {
/// Bound on the elements of one store: 25 global 2.5 x 5 degree maps hold
/// 130 thousand, a file with heights and minutes of spacing a few million.
constexpr long MaxElements = 50000000L;
}  // namespace TECns
