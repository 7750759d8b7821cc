// The server through tedious: node tedious_client.js <folder of node_modules> <port> <login> <password> [encrypt]
'use strict';
const assert = require('node:assert');
const path = require('node:path');
const test = require('node:test');

const [, , modules, port, login, password, encrypt] = process.argv;
const tedious = require(path.join(modules, 'node_modules', 'tedious'));
const { Connection, Request, TYPES, ISOLATION_LEVEL } = tedious;

function connect(options = {}, secret = password) {
  return new Promise((resolve, reject) => {
    const connection = new Connection({
      server: '127.0.0.1',
      authentication: { type: 'default', options: { userName: login, password: secret } },
      options: { port: Number(port), encrypt: encrypt === 'encrypt', trustServerCertificate: true, useUTC: true, ...options },
    });
    connection.connect((error) => (error ? reject(error) : resolve(connection)));
  });
}

async function withConnection(options, work) {
  const connection = await connect(options);
  try {
    return await work(connection);
  } finally {
    connection.close();
  }
}

// Runs a request through `send` and returns its rows as arrays, columns, outputs, status and count.
function ask(send, text, parameters = []) {
  return new Promise((resolve, reject) => {
    const result = { rows: [], columns: [], outputs: {} };
    const request = new Request(text, (error, count) => {
      result.count = count;
      if (error) reject(Object.assign(error, { result }));
      else resolve(result);
    });
    for (const [name, type, value, options = {}] of parameters)
      options.output ? request.addOutputParameter(name, type, value, options) : request.addParameter(name, type, value, options);
    request.on('row', (columns) => result.rows.push(columns.map((column) => column.value)));
    request.on('columnMetadata', (columns) => result.columns.push(columns.map((column) => column.colName)));
    request.on('returnValue', (name, value) => (result.outputs[name] = value));
    request.on('doneProc', (count, more, status) => (result.status = status));
    result.request = request;
    send(request);
  });
}
const batch = (connection, text) => ask((request) => connection.execSqlBatch(request), text);
const query = (connection, text, parameters) => ask((request) => connection.execSql(request), text, parameters);
const call = (connection, name, parameters) => ask((request) => connection.callProcedure(request), name, parameters);
const step = (connection, method, ...first) =>
  new Promise((resolve, reject) => connection[method]((error) => (error ? reject(error) : resolve()), ...first));

test('a wrong password is refused', async () => {
  await assert.rejects(connect({}, 'no such password'), /Login failed for user/);
});

const long = '\u00e4\u20ac\u{1F600}'.repeat(30000);
for (const tdsVersion of ['7_1', '7_2', '7_3_A', '7_3_B', '7_4'])
  for (const packetSize of [512, 4096, 32767])
    test(`version ${tdsVersion} in packets of ${packetSize}`, () =>
      withConnection({ tdsVersion, packetSize }, async (connection) => {
        const result = await query(connection, 'SELECT @a AS a, @b AS b, @c AS c, NULL AS d', [
          ['a', TYPES.NVarChar, tdsVersion === '7_1' ? long.slice(0, 4000) : long],
          ['b', TYPES.Int, -5],
          ['c', TYPES.VarBinary, Buffer.alloc(3000, 7)],
        ]);
        const text = tdsVersion === '7_1' ? long.slice(0, 4000) : long;
        assert.deepStrictEqual(result.rows, [[text, -5, Buffer.alloc(3000, 7), null]]);
        const many = await batch(connection,
          "DECLARE @i int = 0 WHILE @i < 50 BEGIN SELECT REPLICATE('x', 3000) SET @i += 1 END");
        assert.deepStrictEqual(many.rows, Array(50).fill(['x'.repeat(3000)]));
      }));

test('parameters of every type keep their values, and their nulls', () =>
  withConnection({}, async (connection) => {
    const day = new Date(Date.UTC(2024, 1, 29)), moment = new Date(Date.UTC(2024, 1, 29, 23, 59, 58, 123));
    const cases = [
      ['Bit', true], ['TinyInt', 255], ['SmallInt', -32768], ['Int', -2147483648], ['BigInt', '9223372036854775807'],
      ['Decimal', -12345.6789, { precision: 18, scale: 4 }], ['Numeric', 1.5, { precision: 9, scale: 2 }],
      ['Money', -1234567.1234], ['SmallMoney', 1.5], ['Real', 0.5], ['Float', -2.5e100],
      ['Char', 'ab   ', { length: 5 }], ['VarChar', "it's \u20ac"], ['VarChar', 'v'.repeat(9000)],
      ['NChar', 'ab   ', { length: 5 }], ['NVarChar', 'Gr\u00fc\u00dfe \u{1F600}'], ['NVarChar', ''],
      ['NVarChar', 'n'.repeat(70000)], ['Text', 'text'], ['NText', 'ntext \u20ac'],
      ['Date', day], ['DateTime', new Date(Date.UTC(2024, 1, 29, 23, 59, 58, 120))],
      ['SmallDateTime', new Date(Date.UTC(2024, 1, 29, 23, 59))], ['DateTime2', moment, { scale: 3 }],
      ['DateTimeOffset', moment, { scale: 3 }], ['UniqueIdentifier', '6F9619FF-8B86-D011-B42D-00C04FC964FF'],
      ['Binary', Buffer.from([1, 2, 3, 4]), { length: 4 }], ['VarBinary', Buffer.from([0, 255])],
      ['VarBinary', Buffer.alloc(100000, 9)], ['Image', Buffer.from([5])],
    ];
    for (const [type, value, options] of cases) {
      const result = await query(connection, 'SELECT @v AS v, @n AS n',
        [['v', TYPES[type], value, options], ['n', TYPES[type], null, options]]);
      assert.deepStrictEqual(result.rows, [[value, null]], type);
    }
    const time = await query(connection, 'SELECT @v AS v', [['v', TYPES.Time, moment, { scale: 3 }]]);
    assert.strictEqual(time.rows[0][0].toISOString(), '1970-01-01T23:59:58.123Z');
  }));

test('a procedure returns rows, outputs and its status', () =>
  withConnection({}, async (connection) => {
    await batch(connection, 'CREATE OR ALTER PROCEDURE TdAdd @a int, @sum int OUTPUT, @text nvarchar(max) OUTPUT, ' +
      "@d decimal(9,2) OUTPUT AS SELECT @a AS a SET @sum = @a + 1 SET @text = REPLICATE(CAST(@text AS nvarchar(max)), 5000) SET @d = 1.25 RETURN 7");
    const result = await call(connection, 'TdAdd', [
      ['a', TYPES.Int, 4],
      ['sum', TYPES.Int, null, { output: true }],
      ['text', TYPES.NVarChar, 'x\u20ac', { output: true, length: Infinity }],
      ['d', TYPES.Decimal, null, { output: true, precision: 9, scale: 2 }],
    ]);
    assert.deepStrictEqual([result.rows, result.status], [[[4]], 7]);
    assert.deepStrictEqual(result.outputs, { sum: 5, text: 'x\u20ac'.repeat(5000), d: 1.25 });
    const text = await query(connection, 'SET @out = @in * 2', [['in', TYPES.Int, 21], ['out', TYPES.Int, null, { output: true }]]);
    assert.deepStrictEqual(text.outputs, { out: 42 });
    await assert.rejects(call(connection, 'NoSuchProcedure'), { number: 2812 });
    await assert.rejects(call(connection, 'TdAdd', [['a', TYPES.Int, 4]]), { number: 201 });
  }));

test('tables are parameters of procedures and statements', () =>
  withConnection({}, async (connection) => {
    await batch(connection, "CREATE SCHEMA [a]]b]");
    await batch(connection, "CREATE TYPE [a]]b].[Points] AS TABLE (id int PRIMARY KEY, name nvarchar(max) DEFAULT 'none', at datetime2(3), part decimal(9, 2), raw varbinary(8))");
    await batch(connection, 'CREATE PROCEDURE TdPoints @by int, @points [a]]b].Points READONLY, @n int OUTPUT AS ' +
      'SET @n = @@ROWCOUNT SELECT id + @by, name, part, raw, at FROM @points ORDER BY id SET @n = (SELECT COUNT(*) FROM @points)');
    const columns = [
      { name: 'id', type: TYPES.Int }, { name: 'name', type: TYPES.NVarChar, length: Infinity },
      { name: 'at', type: TYPES.DateTime2, scale: 3 }, { name: 'part', type: TYPES.Decimal, precision: 9, scale: 2 },
      { name: 'raw', type: TYPES.VarBinary, length: 8 },
    ];
    const moment = new Date(Date.UTC(2024, 1, 29, 23, 59, 58, 123));
    const points = (rows) => ['points', TYPES.TVP, { schema: 'a]b', name: 'Points', columns, rows }];
    const rows = [[2, long, null, 1.25, null], [1, null, moment, null, Buffer.from([1, 2])]];
    const all = (given) => [['by', TYPES.Int, 10], points(given), ['n', TYPES.Int, null, { output: true }]];
    const result = await call(connection, 'TdPoints', all(rows));
    assert.deepStrictEqual(result.rows, [[11, null, null, Buffer.from([1, 2]), moment], [12, long, 1.25, null, null]]);
    assert.deepStrictEqual(result.outputs, { n: 2 });
    assert.deepStrictEqual((await call(connection, 'TdPoints', all([]))).outputs, { n: 0 });
    assert.deepStrictEqual((await call(connection, 'TdPoints', [['by', TYPES.Int, 10], ['points', TYPES.TVP, null],
      ['n', TYPES.Int, null, { output: true }]])).outputs, { n: 0 });
    for (const [given, number] of [[{ rows: [rows[0], rows[0]] }, 2627], [{ name: 'Lines' }, 2715],
      [{ name: 'Points]; PRINT 1 --' }, 2715], [{ columns: columns.slice(1), rows: [] }, 500], [{ name: 'int', schema: '' }, 50000]]) {
      const parameters = all(rows);
      Object.assign(parameters[1][2], given);
      await assert.rejects(call(connection, 'TdPoints', parameters), { number });
    }
    await batch(connection, 'CREATE TYPE Numbers AS TABLE (n int)');
    const numbers = { name: 'Numbers', columns: [columns[0]], rows: [[20], [22]] };
    assert.deepStrictEqual((await query(connection, 'SELECT SUM(n) FROM @n', [['n', TYPES.TVP, numbers]])).rows, [[42]]);
    assert.deepStrictEqual((await batch(connection, 'SELECT name FROM tempdb.sys.objects')).rows, []);
  }));

test('prepared statements run and are released', () =>
  withConnection({}, async (connection) => {
    await batch(connection, 'CREATE TABLE #p (i int, t nvarchar(20))');
    const rows = [];
    let failed = null;
    await new Promise((resolve) => {
      const request = new Request('INSERT #p VALUES (@i, @t) SELECT i, t FROM #p WHERE i = @i', (error) => {
        failed = error;
        request.emit('ended');
      });
      request.addParameter('i', TYPES.Int);
      request.addParameter('t', TYPES.NVarChar);
      request.on('row', (columns) => rows.push(columns.map((column) => column.value)));
      let turn = 0;
      request.on('prepared', () => request.emit('ended'));
      request.on('ended', () => {
        assert.ifError(failed);
        if (turn < 3) connection.execute(request, { i: ++turn, t: `row ${turn}` });
        else if (turn++ === 3) connection.unprepare(request);
        else resolve();
      });
      connection.prepare(request);
    });
    assert.deepStrictEqual(rows, [[1, 'row 1'], [2, 'row 2'], [3, 'row 3']]);
    const left = await batch(connection, 'SELECT COUNT(*) FROM #p');
    assert.deepStrictEqual(left.rows, [[3]]);
  }));

test('errors have number, severity, state, line and procedure', () =>
  withConnection({}, async (connection) => {
    await assert.rejects(batch(connection, 'SELECT 1\nSELECT * FROM Nowhere'),
      { number: 208, class: 16, lineNumber: 2, message: "Invalid object name 'Nowhere'." });
    await batch(connection, "CREATE OR ALTER PROCEDURE TdFail AS\nRAISERROR('own', 15, 9)");
    await assert.rejects(batch(connection, 'EXEC TdFail'),
      { number: 50000, class: 15, state: 9, lineNumber: 2, procName: 'TdFail', message: 'own' });
    const infos = [];
    connection.on('infoMessage', (info) => infos.push(info.message));
    await batch(connection, "PRINT 'gr\u00fc\u00df'");
    assert.deepStrictEqual(infos, ['gr\u00fc\u00df']);
  }));

test('several result sets, their columns and counts', () =>
  withConnection({}, async (connection) => {
    const result = await batch(connection,
      'CREATE TABLE #n (i int) INSERT #n VALUES (1), (2), (3) SELECT i AS a FROM #n UPDATE #n SET i = 0 WHERE i > 1 SELECT 4 AS b, 5 AS c');
    assert.deepStrictEqual(result.columns, [['a'], ['b', 'c']]);
    assert.deepStrictEqual(result.rows, [[1], [2], [3], [4, 5]]);
    assert.strictEqual(result.count, 3 + 3 + 2 + 1);
  }));

test('transactions of every isolation level commit, roll back and nest', () =>
  withConnection({}, async (connection) => {
    await batch(connection, "IF OBJECT_ID('TdKept') IS NOT NULL DROP TABLE TdKept CREATE TABLE TdKept (i int)");
    const begin = (name, level) => step(connection, 'beginTransaction', name, level);
    const insert = (i) => query(connection, 'INSERT TdKept VALUES (@i)', [['i', TYPES.Int, i]]);
    for (const level of Object.values(ISOLATION_LEVEL)) {
      await begin('outer', level);
      assert.deepStrictEqual((await batch(connection, 'SELECT @@TRANCOUNT')).rows, [[1]]);
      await insert(level);
      await step(connection, 'rollbackTransaction');
    }
    await begin('a]name');
    await insert(10);
    await step(connection, 'saveTransaction', 'point');
    await insert(11);
    await step(connection, 'rollbackTransaction', 'point');
    await insert(12);
    await step(connection, 'commitTransaction');
    assert.deepStrictEqual((await batch(connection, 'SELECT i FROM TdKept ORDER BY i')).rows, [[10], [12]]);
  }));

test('a transaction begun by a batch is reported', () =>
  withConnection({}, async (connection) => {
    assert.strictEqual(connection.inTransaction, false);
    await batch(connection, 'BEGIN TRANSACTION');
    assert.strictEqual(connection.inTransaction, true);
    assert.notDeepStrictEqual(connection.currentTransactionDescriptor(), Buffer.alloc(8));
    await step(connection, 'commitTransaction');
    assert.strictEqual(connection.inTransaction, false);
    await assert.rejects(batch(connection, "BEGIN TRANSACTION SET XACT_ABORT ON SELECT 1 / 0 SET XACT_ABORT OFF"), { number: 8134 });
    assert.strictEqual(connection.inTransaction, false);
  }));

function cancelled(connection, text, when) {
  return new Promise((resolve) => {
    const request = new Request(text, (error) => resolve(error && error.code));
    let rows = 0;
    request.on('row', () => ++rows === 500 && when === 'rows' && connection.cancel());
    connection.execSqlBatch(request);
  if (when === 'waiting') setTimeout(() => connection.cancel(), 200);
  });
}

test('a request is cancelled while it waits and while its rows come', () =>
  withConnection({}, async (connection) => {
    assert.strictEqual(await cancelled(connection, "WAITFOR DELAY '00:05:00'", 'waiting'), 'ECANCEL');
    assert.strictEqual(await cancelled(connection, "WHILE 1 = 1 SELECT REPLICATE('x', 100)", 'rows'), 'ECANCEL');
    assert.deepStrictEqual((await batch(connection, "SELECT 'continues'")).rows, [['continues']]);
  }));

test('a request cancelled half sent leaves the connection usable', () =>
  withConnection({}, async (connection) => {
    const part = Buffer.alloc(4_000_000, 7);
    let isHalfSent = false;
    // On a busy host a request may be sent whole before it is cancelled.
    for (let attempt = 0; attempt < 20 && !isHalfSent; ++attempt) {
      const before = connection.socket.bytesWritten;
      await new Promise((resolve) => {
        const request = new Request('SELECT 1', resolve);
        for (let i = 0; i < 8; ++i) request.addParameter(`p${i}`, TYPES.VarBinary, part);
        connection.execSql(request);
        setImmediate(() => connection.cancel());
      });
      isHalfSent = connection.socket.bytesWritten - before < 8 * part.length;
    }
    assert.ok(isHalfSent);
    assert.deepStrictEqual((await batch(connection, "SELECT 'continues'")).rows, [['continues']]);
  }));

test('a reset connection has a new session', () =>
  withConnection({}, async (connection) => {
    await batch(connection, 'USE msdb CREATE TABLE #gone (i int) BEGIN TRANSACTION');
    await step(connection, 'reset');
    const state = await batch(connection, "SELECT DB_NAME(), OBJECT_ID('tempdb..#gone'), @@TRANCOUNT");
    assert.deepStrictEqual(state.rows, [['master', null, 0]]);
  }));

test('bulk loads insert all rows or none', () =>
  withConnection({}, async (connection) => {
    await batch(connection, 'CREATE TABLE #b (id int IDENTITY PRIMARY KEY, t nvarchar(20) UNIQUE, d decimal(9, 2) DEFAULT 1.5 CHECK (d >= 0), ' +
      'm datetimeoffset(3), n nvarchar(max), raw varbinary(max), c char(5), x text)');
    const columns = [['t', TYPES.NVarChar, { length: 20 }], ['d', TYPES.Decimal, { precision: 9, scale: 2 }], ['m', TYPES.DateTimeOffset, { scale: 3 }],
      ['n', TYPES.NVarChar, { length: Infinity }], ['raw', TYPES.VarBinary, { length: Infinity }], ['c', TYPES.Char, { length: 5 }], ['x', TYPES.Text, {}]];
    const load = (options, rows) => new Promise((resolve, reject) => {
      const bulk = connection.newBulkLoad('#b', options, (error, count) => (error ? reject(error) : resolve(count)));
      for (const [name, type, settings] of columns) bulk.addColumn(name, type, { nullable: true, ...settings });
      connection.execBulkLoad(bulk, rows);
    });
    const full = ['\u20ac', 2.25, new Date(Date.UTC(2024, 1, 29, 1, 2, 3, 120)), long, Buffer.alloc(9000, 7), 'ab   ', 'text'];
    const empty = (name) => [name, ...Array(6).fill(null)];
    const many = Array.from({ length: 2000 }, (_, i) => empty(`r${i}`));
    assert.deepStrictEqual([await load({}, [full, empty('a')]), await load({ keepNulls: true, checkConstraints: true }, [empty('b')])], [2, 1]);
    assert.deepStrictEqual([await load({}, []), await load({ lockTable: true }, many)], [0, 2000]);
    await assert.rejects(load({}, [empty('new'), empty('B ')]), { number: 2627 });
    await assert.rejects(load({}, [empty('new'), ['c', -1, ...Array(5).fill(null)]]), { number: 547 });
    const result = await batch(connection, 'SELECT t, d, m, n, raw, c, x FROM #b WHERE id <= 3 SELECT COUNT(*), SUM(d) FROM #b');
    assert.deepStrictEqual(result.rows, [full, ['a', 1.5, null, null, null, null, null], empty('b'), [2003, 3003.75]]);
    columns[0][0] = 'nowhere';
    await assert.rejects(load({}, [full]), { number: 207 });
  }));
