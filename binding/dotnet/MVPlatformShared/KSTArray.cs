using System;

namespace Morvenhal.RF.KST.Shared
{
    /// <summary>
    /// A resizable array of samples whose elements lie in one contiguous block.
    /// </summary>
    /// <typeparam name="T">The type of an element, without references.</typeparam>
    public class KSTArray<T> where T : struct
    {
        private T[] m_items;
        private int m_count;

        /// <summary>An empty array.</summary>
        public KSTArray()
        {
            m_items = Array.Empty<T>();
        }

        /// <summary>An array of <paramref name="count"/> elements of zero.</summary>
        public KSTArray(int count)
        {
            m_items = new T[count];
            m_count = count;
        }

        /// <summary>An array with the elements of <paramref name="items"/>, copied.</summary>
        public KSTArray(T[] items)
        {
            m_items = (T[])(items ?? throw new ArgumentNullException(nameof(items))).Clone();
            m_count = items.Length;
        }

        /// <summary>
        /// The number of elements. Setting it keeps those that remain and gives those that are new the value zero. The
        /// block only ever grows, to exactly the count that is asked for.
        /// </summary>
        /// <exception cref="ArgumentOutOfRangeException">The count is negative.</exception>
        public int Count
        {
            get => m_count;
            set
            {
                if (value < 0) throw new ArgumentOutOfRangeException(nameof(value));
                if (value > m_items.Length)
                {
                    Array.Resize(ref m_items, value);
                }
                else if (value < m_count)
                {
                    Array.Clear(m_items, value, m_count - value);
                }
                m_count = value;
            }
        }

        /// <summary>Element <paramref name="index"/>, from 0 to <see cref="Count"/> - 1.</summary>
        /// <exception cref="IndexOutOfRangeException">There is no such element.</exception>
        public T this[int index]
        {
            get => m_items[Checked(index)];
            set => m_items[Checked(index)] = value;
        }

        /// <summary>
        /// The block of the elements, at least <see cref="Count"/> long; valid until the count grows.
        /// </summary>
        public T[] InnerArray => m_items;

        private int Checked(int index)
        {
            return (uint)index < (uint)m_count ? index : throw new IndexOutOfRangeException();
        }
    }
}
