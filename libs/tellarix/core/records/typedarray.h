// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/numericarray.h>
#include <tellarix/core/records/samplememory.h>

#include <memory>

namespace Tellarix {

/**
 * An array of samples of type @p T: `char`, `int`, `float` or `double`.
 *
 * Samples and pyramid lie in one allocation, whose last 4 percent are kept for the pyramid from
 * the start. Arrays below two blocks have no pyramid, nor has text. Whoever asks for writable
 * samples drops the pyramid. New samples are not initialised. A negative size counts as 0.
 */
template <typename T>
class TELLARIX_CORE_API TypedArray : public NumericArray
{
public:
    using ArrayType = TypedArray<T>;
    using ElementType = T;

    TypedArray() = default;
    /** An array of @p size samples without a defined value. */
    explicit TypedArray(int size);
    /** The same in a part of @p memory, which may be freed before the array. */
    TypedArray(int size, SampleMemory &memory);
    TypedArray(int size, const T *samples);
    TypedArray(const TypedArray &other);
    TypedArray &operator=(const TypedArray &other);
    ~TypedArray() override;

    /** Converts the samples of @p other; NaN and values out of range become 0 or the limit of an
     *  integer type. */
    static Core::SmartPointer<TypedArray<T>> Convert(const NumericArray &other);
    /** @p other itself if it is of this type, otherwise a converted copy; null for null. */
    static Core::SmartPointer<const TypedArray<T>> From(const ArrayCPtr &other);

    /** Replaces the content by a copy of @p n samples, which may be samples of this array. */
    void setData(int n, const T *samples);
    /** Changes the size; samples that stay keep their value. Drops the pyramid. */
    void resize(int size);

    const T *typedData() const { return samples(); }
    /** Writable samples; drops the pyramid. */
    T *typedData();
    T operator[](int index) const { return samples()[index]; }
    const T *begin() const { return samples(); }
    const T *end() const { return samples() + _size; }

    DataType dataType() const override;
    int size() const override { return _size; }
    const void *data() const override { return samples(); }
    int elementSize() const override { return sizeof(T); }
    size_t memorySize() const override;
    double value(int index) const override { return static_cast<double>(samples()[index]); }
    void buildPyramid() override;
    SampleSummary summary(int first, int last) const override;
    using NumericArray::summary;
    bool extrema(int first, int last, double &minimum, double &maximum) const override;
    void summarizeRuns(const int *edges, int count, SampleRun *runs) const override;
    void prefetchRuns(double firstEdge, double spacing, int alignment) const override;
    int firstNonFinite(int first, int last) const override;
    int lastNonFinite(int first, int last) const override;
    void convert(int first, int last, float *target) const override;
    void convert(int first, int last, double *target) const override;
    void convert(int first, int last, int *target) const override;

private:
    struct Pyramid;

    Pyramid pyramid() const;
    void countFinite();
    bool findExtrema(int first, int last, T &minimum, T &maximum) const;
    void dropPyramid();
    template <typename Scan, typename Merge>
    void walk(int first, int last, int lowest, Scan scan, Merge merge) const;
    template <typename Target>
    void convertTo(int first, int last, Target *target) const;

    T *samples() const { return static_cast<T *>(_block.data()); }

    int _size{0};
    SampleBlock _block;
    /** Finite samples of each block, only where some sample is not finite. */
    std::unique_ptr<int[]> _counts;
    bool _hasPyramid{false};
};

using CharArray = TypedArray<char>;
using IntArray = TypedArray<int>;
using FloatArray = TypedArray<float>;
using DoubleArray = TypedArray<double>;

extern template class TypedArray<char>;
extern template class TypedArray<int>;
extern template class TypedArray<float>;
extern template class TypedArray<double>;

} // namespace Tellarix
