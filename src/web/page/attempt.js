// SPDX-License-Identifier: Apache-2.0
// What the device was asked for last, and what has come of it: a phase, which has its words in words.js.
var attempt = (function () {
  'use strict';

  var SLOW = 60, SETTLED = 5; // seconds
  var PHASES = {notInRange: 'notFound', keyRefused: 'wrongKey', noAddress: 'noAddress', refused: 'notLetIn',
    cableFirst: 'byCable', airplaneMode: 'inFlight'};

  // What was asked for; null where nothing was: {phase, ssid of a network to join, address, softAp, done: the word for its
  // success, name: what that is about, text, error, pin, id: under which it may be tried,
  // trial: 'perhaps' | 'wanted' | 'seen' while it is, as far as the page knows}.
  var attempt = {now: null}, isConfirming = false;

  function isAddressed(link, ip) {
    return link.state === 'connected' && (ip ? link.addresses.indexOf(ip) >= 0 : link.addresses.length > 0);
  }

  // What may take this page's way to the device along has an id: the page that finds the device again knows it by that.
  function freshId() {
    var bytes = new Uint8Array(8), text = '';
    crypto.getRandomValues(bytes);
    for (var i = 0; i < bytes.length; i++) text += (256 + bytes[i]).toString(16).slice(1);
    return text;
  }

  attempt.begin = function (what) {
    attempt.now = what;
    what.id = device.trial = what.ssid || what.address ? freshId() : '';
    what.phase = what.phase || 'sending';
    what.since = Date.now();
    what.isAnswered = false;
    what.before = device.state && device.state.lastJoin ? device.state.lastJoin.when : 0;
  };

  attempt.answered = function (now, error, answer) {
    if (attempt.now !== now || now.isAnswered) return;
    now.isAnswered = true;
    // Nothing was answered because the device has gone: perhaps it does what it was asked for.
    now.error = error && error.error !== 'lost' ? error : null;
    if (error && error.error === 'lost' && now.id) now.trial = 'perhaps';
    if (answer && answer.trial) now.trial = 'wanted';
    now.phase = now.error ? 'failed' : now.ssid ? 'trying' : now.trial ? 'onTrial' : 'saved';
    now.since = Date.now();
    attempt.follow();
  };

  // Why a network was not joined: the phase for a reason of the device.
  attempt.phaseOf = function (join) { return PHASES[join.reason] || 'slow'; };

  function followJoin(now, state, seconds) {
    var link = state.wireless, last = state.lastJoin, isNew = last.when !== now.before;
    if (link.state === 'connected' && link.ssid === now.ssid) {
      now.phase = isAddressed(link) ? 'joined' : 'addressing';
    } else if (isNew && last.result === 'failed' && last.ssid === now.ssid) {
      now.phase = attempt.phaseOf(last);
    } else if (isNew && last.result === 'joined' && link.state === 'connected' && seconds > SETTLED) {
      now.phase = 'otherNetwork';
    } else {
      now.phase = seconds > SLOW ? 'slow' : 'trying';
    }
  }

  // True if what is on trial has come true. That the page can still say so is the rest of the proof.
  function holds(state, now, seconds) {
    var address = now && now.address;
    if (address) return isAddressed(state[address.interface], address.dhcp ? '' : address.ip) && (!address.dhcp || seconds > SETTLED);
    if (now) return now.phase === 'joined';
    return ['wired', 'wireless'].every(function (name) {
      var link = state[name], set = state[name + 'Address'];
      if (link.state !== 'connected') return true;
      return isAddressed(link, set.dhcp ? '' : set.ip) && (name === 'wired' || state.known[0] && state.known[0].ssid === link.ssid);
    });
  }

  function settle(now) {
    now.trial = '';
    if (now.phase === 'onTrial') now.phase = 'saved';
  }

  // Keeps what is on trial.
  function keep(now) {
    isConfirming = true;
    if (now) now.trial = ''; // its end, which may be told before the answer comes, is not one by time
    device.act('confirm', {}, function (error) {
      isConfirming = false;
      if (error && now) now.trial = 'wanted';
      else if (now) settle(now);
      else if (!error) attempt.begin({phase: 'saved'});
    });
  }

  function followTrial(now, state, seconds) {
    var id = now ? now.id : device.carried, isRunning = !!id && !!state.trial && state.trial.id === id;
    if (now && now.trial && isRunning) {
      now.trial = 'seen';
    } else if (now && (now.trial === 'seen' || seconds > SETTLED && (now.trial === 'wanted' ||
      now.trial === 'perhaps' && now.address && !holds(state, now, seconds)))) {
      now.phase = 'rolledBack';
      now.trial = '';
    } else if (now && now.trial && seconds > SETTLED) {
      settle(now);
    }
    if (isRunning && !isConfirming && holds(state, now, seconds)) keep(now);
  }

  // Looks at what the device has told, as often as it tells something, and as time goes by.
  attempt.follow = function () {
    var now = attempt.now, state = device.state, seconds = now ? (Date.now() - now.since) / 1000 : 0;
    if (!state || !state.host || device.lostSince) return;
    if (now && now.phase === 'sending' && device.foundAt > now.since) return attempt.answered(now, {error: 'lost'});
    if (now && now.ssid && now.phase !== 'sending' && now.phase !== 'failed' && now.phase !== 'rolledBack') followJoin(now, state, seconds);
    followTrial(now, state, seconds);
  };

  return attempt;
}());
