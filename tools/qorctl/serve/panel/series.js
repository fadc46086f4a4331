// The values of one parameter over time, as many as are kept.
"use strict";
Panel.series = (() => {
    const mostPoints = 120000;
    const leastStaleS = 1;
    const staleIntervals = 5;

    /// How many of the sorted times are below `time`.
    const below = (times, time) => {
        let low = 0;
        let high = times.length;
        while (low < high) {
            const middle = (low + high) >> 1;
            if (times[middle] < time) low = middle + 1;
            else high = middle;
        }
        return low;
    };

    return class Series {
        times = []; // s since 1970, of this computer's clock
        values = []; // null where there is a gap
        lowest = null;
        highest = null;
        missed = 0;
        missedBefore = 0; // in streams that have ended
        intervalS = null;
        lastS = null;
        dropped = 0;

        /// A value that is no number is a gap.
        add(timeS, value, missed) {
            const at = this.lastS !== null && timeS <= this.lastS ? this.lastS + 0.001 : timeS;
            if (this.lastS !== null) {
                const interval = at - this.lastS;
                if (interval > this.staleS()) this.#push(this.lastS + 0.001, null);
                else this.intervalS = this.intervalS === null ? interval : this.intervalS * 0.9 + interval * 0.1;
            }
            const isNumber = typeof value === "number";
            this.#push(at, isNumber ? value : null);
            this.lastS = at;
            this.last = value;
            this.missed = this.missedBefore + missed;
            if (!isNumber) return;
            if (this.lowest === null || value < this.lowest) this.lowest = value;
            if (this.highest === null || value > this.highest) this.highest = value;
        }

        #push(time, value) {
            this.times.push(time);
            this.values.push(value);
            if (this.times.length < mostPoints) return;
            const half = mostPoints / 2;
            this.times.splice(0, half);
            this.values.splice(0, half);
            this.dropped += half;
        }

        /// Another stream begins to bring the values.
        beginAnew() {
            this.missedBefore = this.missed;
        }

        staleS() {
            return Math.max(leastStaleS, staleIntervals * (this.intervalS ?? 0));
        }

        isStale(nowS) {
            return this.lastS === null || nowS - this.lastS > this.staleS();
        }

        /// What lies between two times, with one value beside it on each side.
        part(fromS, toS) {
            const first = Math.max(0, below(this.times, fromS) - 1);
            const end = Math.min(this.times.length, below(this.times, toS) + 1);
            return [this.times.slice(first, end), this.values.slice(first, end)];
        }

        /// The last value at or before a time, unless it was stale by then.
        at(timeS) {
            const i = below(this.times, timeS + 1e-6) - 1;
            return i >= 0 && timeS - this.times[i] <= this.staleS() ? this.values[i] : null;
        }
    };
})();
