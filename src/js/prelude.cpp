#include "tnv5/js/prelude.h"

namespace tnv5::js {

QString preludeText()
{
    return QStringLiteral(R"js((function (bridge, global) {
'use strict';

const things = new WeakMap(); // wrapper: what it stands for, as the bridge knows it
const base = Object.prototype;

// What runs later than now, or waits, is outside of every time budget.
['Promise', 'Atomics', 'SharedArrayBuffer'].forEach(name => { delete global[name]; });

function refuse(text) {
    throw new TypeError(text);
}

// A value as the bridge takes it. Whatever code of the script runs for it runs here.
function plain(value) {
    switch (typeof value) {
    case 'function':
    case 'symbol':
        return refuse('A ' + typeof value + ' cannot be passed');
    case 'object':
        break;
    default:
        return value;
    }
    if (value === null) {
        return null;
    }
    const thing = things.get(value);
    if (thing !== undefined) {
        return thing;
    }
    if (!Array.isArray(value)) {
        return refuse('An object of the script cannot be passed');
    }
    const list = [];
    for (let i = 0; i < value.length; ++i) {
        list[i] = plain(value[i]);
    }
    return list;
}

// An argument: kinds are 'value', 'reference' (an object with the value) and 'list' (an array filled in place).
function taken(arg, kind, name) {
    if (kind === 'value') {
        return plain(arg);
    }
    if (kind === 'list') {
        return Array.isArray(arg) ? plain(arg) : refuse(name + ' needs an array to fill');
    }
    if (typeof arg !== 'object' || arg === null || Array.isArray(arg) || things.has(arg) || !('value' in arg)) {
        return refuse(name + ' changes this argument: it needs an object with a value');
    }
    return plain(arg.value);
}

function giveBack(arg, kind, value) {
    if (kind === 'reference') {
        arg.value = value;
    } else if (kind === 'list') {
        arg.length = 0;
        value.forEach(each => { arg.push(each); });
    }
}

// The bridge answers a call with the result and, behind it, the values of all arguments when some are changed.
function call(name, kinds, args, action) {
    if (args.length !== kinds.length) {
        refuse(name + ' takes ' + kinds.length + (kinds.length === 1 ? ' argument' : ' arguments') + ', not ' +
               args.length);
    }
    const answer = action(args.map((arg, i) => taken(arg, kinds[i], name)));
    kinds.forEach((kind, i) => giveBack(args[i], kind, answer[i + 1]));
    return answer[0];
}

function makeClass(name, parent) {
    return {
        name: name,
        methods: Object.create(parent === null ? null : parent.methods),
        indexed: Object.create(parent === null ? null : parent.indexed),
        prototype: Object.create(parent === null ? base : parent.prototype)
    };
}

function clearClass(cls) {
    Object.keys(cls.methods).forEach(name => { delete cls.methods[name]; });
    Object.keys(cls.indexed).forEach(name => { delete cls.indexed[name]; });
}

function addMethod(cls, name, index, kinds) {
    cls.methods[name] = function (...args) {
        const self = things.get(this);
        if (self === undefined || self.kind !== 'object') {
            refuse(name + ' is a method of ' + cls.name);
        }
        return call(name, kinds, args, values => bridge.call(self.id, index, values));
    };
}

function addIndexed(cls, name) {
    cls.indexed[name] = true;
}

function makeConstructor(cls, index) {
    const make = function (...args) {
        if (new.target === undefined) {
            refuse(cls.name + ' needs new');
        }
        if (args.length > 0) {
            refuse(cls.name + ' takes no arguments');
        }
        return bridge.create(index);
    };
    Object.defineProperty(make, 'name', {value: cls.name});
    make.prototype = cls.prototype;
    Object.defineProperty(make, Symbol.hasInstance, {value: object => {
        const thing = things.get(object);
        return thing !== undefined && thing.kind === 'object' &&
               (thing.like === cls.prototype || cls.prototype.isPrototypeOf(thing.like));
    }});
    Object.defineProperty(cls.prototype, 'constructor', {value: make, configurable: true, writable: true});
    return make;
}

function closed(handlers, name) {
    const no = () => refuse(name + ' cannot be changed in this way');
    handlers.defineProperty = no;
    handlers.deleteProperty = no;
    handlers.setPrototypeOf = no;
    handlers.preventExtensions = no;
    return handlers;
}

// Names that the language itself asks any object for.
function common(target, name, title) {
    return name === Symbol.toStringTag ? title : target[name];
}

function isCommon(name) {
    return typeof name === 'symbol' || name === 'toJSON' || name in base;
}

// Keys are there to be listed; their values come from elsewhere.
function withKeys(target, names) {
    names.forEach(name => { target[name] = undefined; });
    return target;
}

function wrapItems(id, cls, name) {
    const title = cls.name + '.' + name;
    const indexOf = text => /^(0|-?[1-9][0-9]{0,8})$/.test(text) ? Number(text) : refuse(title + ' needs an integer');
    return new Proxy({}, closed({
        get: (target, key) => isCommon(key) ? common(target, key, title) : bridge.readItem(id, name, indexOf(key)),
        set: (target, key, value) => {
            bridge.writeItem(id, name, indexOf(String(key)), plain(value));
            return true;
        },
        has: (target, key) => key in target
    }, title));
}

function wrapObject(id, cls, names) {
    const items = {};
    const wrapper = new Proxy(withKeys(Object.create(cls.prototype), names), closed({
        get: (target, name) => {
            if (isCommon(name)) {
                return common(target, name, cls.name);
            }
            const method = cls.methods[name];
            if (method !== undefined) {
                return method;
            }
            if (name in cls.indexed) {
                if (!(name in items)) {
                    items[name] = wrapItems(id, cls, name);
                }
                return items[name];
            }
            return bridge.read(id, name);
        },
        set: (target, name, value) => {
            if (typeof value === 'function') {
                bridge.assign(id, String(name), value, new Error().stack);
            } else {
                bridge.write(id, String(name), plain(value));
            }
            return true;
        },
        has: (target, name) => name in target || name in cls.methods || name in cls.indexed
    }, cls.name));
    things.set(wrapper, {kind: 'object', id: id, like: cls.prototype});
    return wrapper;
}

function wrapRecord(holder, title, names) {
    const wrapper = new Proxy(withKeys({}, names), closed({
        get: (target, name) => isCommon(name) ? common(target, name, title) : bridge.readField(holder, name),
        set: (target, name, value) => {
            bridge.writeField(holder, String(name), plain(value));
            return true;
        },
        has: (target, name) => name in target
    }, title));
    things.set(wrapper, {kind: 'holder', holder: holder});
    return wrapper;
}

function makeRecord(name, handle) {
    const make = function (...args) {
        if (new.target === undefined || args.length > 0) {
            refuse(name + ' needs new, and takes no arguments');
        }
        return bridge.createRecord(handle);
    };
    Object.defineProperty(make, 'name', {value: name});
    return make;
}

// An object that is spoken to by name.
function wrapAutomation(holder) {
    const isReference = arg => typeof arg === 'object' && arg !== null && !Array.isArray(arg) && !things.has(arg);
    const wrapper = Object.freeze({
        call: (name, ...args) => {
            const kinds = args.map(arg => isReference(arg) ? 'reference' : 'value');
            return call(String(name), kinds, args, values => bridge.callAutomation(holder, String(name), values, kinds));
        },
        get: name => bridge.getAutomation(holder, String(name)),
        set: (name, value) => { bridge.setAutomation(holder, String(name), plain(value)); }
    });
    things.set(wrapper, {kind: 'holder', holder: holder});
    return wrapper;
}

// A value that scripts can only hand on, such as a picture.
function wrapOpaque(holder) {
    const wrapper = Object.freeze({});
    things.set(wrapper, {kind: 'holder', holder: holder});
    return wrapper;
}

function makeProc(name, handle, kinds) {
    return (...args) => call(name, kinds, args, values => bridge.callProc(handle, values));
}

function define(name, value) {
    Object.defineProperty(global, name, {
        get: () => value,
        set: () => refuse(name + ' cannot be written'),
        configurable: true,
        enumerable: true
    });
}

function remove(name) {
    delete global[name];
}

function describe(error) {
    try {
        const isError = error instanceof Error;
        return {text: String(error), stack: isError ? String(error.stack) : '', failed: true};
    } catch (other) {
        return {text: 'An error without a text', stack: '', failed: true};
    }
}

// Runs a handler. Gives the values of the parameters by reference, in their order, or what went wrong.
function invoke(handler, args, references) {
    try {
        references.forEach(i => { args[i] = {value: args[i]}; });
        const given = args.slice();
        handler(...args);
        return references.map(i => plain(given[i].value));
    } catch (error) {
        return describe(error);
    }
}

const say = (...values) => { bridge.print(values.map(String).join(' ')); };
global.print = say;
global.console = {log: say, info: say, warn: say, error: say, debug: say};

return {makeClass, clearClass, addMethod, addIndexed, makeConstructor, wrapObject, wrapRecord, makeRecord,
        wrapAutomation, wrapOpaque, makeProc, define, remove, invoke};
}))js");
}

} // namespace tnv5::js
