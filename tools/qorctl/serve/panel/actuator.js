// An actuator under direct control for as long as a button is held. The server gives it back by itself
// when it hears nothing for the time of the lease, so a page that dies lets go as well.
"use strict";
Panel.actuator = (() => {
    const leaseMs = 1500;
    const renewMs = 400;
    const timeoutMs = 500;

    return class Actuator {
        #isWanted = false;
        #isHeld = false;
        #heldAt = 0;
        #isOthers = false;
        #target = 0;
        #written = null;
        #timer = null;
        #work = Promise.resolve();

        /// `told(state, text, error)`: "idle", "taking", "held", "failed".
        constructor(name, told) {
            this.name = name;
            this.told = told;
        }

        get isWanted() { return this.#isWanted; }

        set(value) {
            this.#target = value;
            if (this.#isHeld) this.#then(() => this.#write());
        }

        take() {
            if (this.#isWanted) return;
            this.#isWanted = true;
            this.told("taking", "Taking control\u2026");
            this.#then(() => this.#start());
        }

        /// Whatever is under way: it ends with the actuator given back. `why` is told.
        release(why = "Given back.", isLast = false) {
            if (!this.#isWanted) return;
            this.#isWanted = false;
            clearInterval(this.#timer);
            if (isLast && this.#isHeld) void this.#giveBack(true);
            this.#then(async () => {
                if (this.#isHeld) await this.#giveBack();
                if (!this.#isWanted) this.told("idle", why);
            });
        }

        /// The server says who holds it.
        heard({ held, own }) {
            // What comes right behind a new start may still tell of the end before it.
            const isOld = performance.now() - this.#heldAt < renewMs;
            if (this.#isWanted || this.#isHeld) {
                if (!held && this.#isHeld && this.#isWanted && !isOld) this.#fail(null, "The server gave it back.");
            } else if (held ? !own : this.#isOthers) {
                this.#isOthers = held;
                this.told("idle", held ? "Another client drives it." : "Not driven.");
            }
        }

        #then(step) {
            this.#work = this.#work.then(step).catch((error) => this.#fail(error));
        }

        async #start() {
            if (!this.#isWanted) return;
            clearInterval(this.#timer);
            await Panel.call("startDirectCtrl", { name: this.name, timeoutMs, leaseMs });
            this.#isHeld = true;
            this.#heldAt = performance.now();
            this.#written = null;
            if (!this.#isWanted) return; // let go meanwhile: the next step gives it back
            clearInterval(this.#timer);
            this.#timer = setInterval(() => this.#renew(), renewMs);
            await this.#write();
        }

        /// Only the latest value goes: what was wanted in between is passed over.
        async #write() {
            if (!this.#isWanted || !this.#isHeld || this.#written === this.#target) return;
            const value = this.#target;
            this.#written = value;
            await Panel.call("setParamData", { name: this.name, values: [value], timeoutMs });
            if (this.#isWanted) this.told("held", `Driven at ${Panel.format.shown(value)}`);
        }

        #renew() {
            if (!this.#isWanted || !this.#isHeld) return;
            Panel.call("renewDirectCtrl", { name: this.name, leaseMs }).catch((error) => {
                if (this.#isWanted) this.#fail(error);
            });
        }

        async #giveBack(isLast = false) {
            this.#isHeld = false;
            clearInterval(this.#timer);
            await Panel.call("stopDirectCtrl", { name: this.name, timeoutMs }, isLast);
        }

        #fail(error, text = "Not driven.") {
            const wasHeld = this.#isHeld;
            this.#isWanted = false;
            this.#isHeld = false;
            clearInterval(this.#timer);
            if (wasHeld) void Panel.call("stopDirectCtrl", { name: this.name, timeoutMs }).catch(() => {});
            this.told("failed", text, error);
        }
    };
})();
