/// Index of the last of `count` rows or pages in a column that begins at `y` or above it, or of the
/// first one. `topOf(index)` is where one begins; few are asked, since there may be thousands.
export function lastAtOrAbove(count, y, topOf) {
    let low = 0;
    let high = Math.max(0, count - 1);
    while (low < high) {
        const middle = Math.ceil((low + high) / 2);
        if (topOf(middle) <= y) {
            low = middle;
        } else {
            high = middle - 1;
        }
    }
    return low;
}
