// The storage of the real provider. It outlives one instance of the provider, so that keys can be rotated without losing grants,
// and a test can look at it and change it.

export class Storage {
    constructor() {
        this.entries = new Map(); // 'Model:id' -> { payload, expiresAt }
    }

    /// What `oidc-provider` calls for each model.
    adapter() {
        const storage = this;
        return class Adapter {
            constructor(model) {
                this.model = model;
            }

            async upsert(id, payload, expiresIn) {
                storage.entries.set(`${this.model}:${id}`, {
                    payload, expiresAt: expiresIn === undefined ? Infinity : Date.now() + expiresIn * 1000,
                });
            }

            async find(id) {
                return storage.find(`${this.model}:${id}`);
            }

            async findByUserCode(userCode) {
                return storage.findWhere(this.model, 'userCode', userCode);
            }

            async findByUid(uid) {
                return storage.findWhere(this.model, 'uid', uid);
            }

            async consume(id) {
                storage.entries.get(`${this.model}:${id}`).payload.consumed = Math.floor(Date.now() / 1000);
            }

            async destroy(id) {
                storage.entries.delete(`${this.model}:${id}`);
            }

            async revokeByGrantId(grantId) {
                storage.removeWhere(payload => payload.grantId === grantId);
            }
        };
    }

    find(key) {
        const entry = this.entries.get(key);
        if (entry && entry.expiresAt <= Date.now()) {
            this.entries.delete(key);
            return undefined;
        }
        return entry?.payload;
    }

    findWhere(model, member, value) {
        for (const [key, { payload }] of this.entries) {
            if (key.startsWith(`${model}:`) && payload[member] === value)
                return this.find(key);
        }
        return undefined;
    }

    /// The payloads of a model that have not expired.
    all(model) {
        return [...this.entries.keys()].filter(key => key.startsWith(`${model}:`)).map(key => this.find(key))
            .filter(payload => payload !== undefined);
    }

    /// Removes entries. Returns how many.
    removeWhere(matches) {
        let count = 0;
        for (const [key, { payload }] of this.entries) {
            if (matches(payload, key)) {
                this.entries.delete(key);
                ++count;
            }
        }
        return count;
    }
}
