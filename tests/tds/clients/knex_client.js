// The server through knex: node knex_client.js <folder of node_modules> <port> <login> <password>
'use strict';
const assert = require('node:assert');
const path = require('node:path');

const [, , modules, port, user, password] = process.argv;
const knex = require(path.join(modules, 'node_modules', 'knex'))({
  client: 'mssql',
  connection: { server: '127.0.0.1', port: Number(port), user, password, database: 'knex', options: { encrypt: false } },
  pool: { min: 0, max: 2 },
});

const moment = new Date(Date.UTC(2024, 1, 29, 1, 2, 3, 123));
const migration = { up: (k) => k.schema.createTable('migrated', (t) => t.increments()), down: (k) => k.schema.dropTable('migrated') };
const migrationSource = { getMigrations: async () => ['first'], getMigrationName: (name) => name, getMigration: async () => migration };

async function changeSchema() {
  await knex.schema.createTable('site', (t) => {
    t.increments('id');
    t.string('name', 40).notNullable().unique({ useConstraint: true });
    t.decimal('amount', 12, 3).defaultTo(1.5);
    t.boolean('good').defaultTo(true);
    t.text('note');
    t.timestamps(true, true);
  });
  await knex.schema.createTable('reading', (t) => {
    t.integer('site_id').references('id').inTable('site').onDelete('CASCADE');
    t.smallint('number');
    t.dateTime('taken', { precision: 3 }).index('ix_taken');
    t.binary('raw');
    t.primary(['site_id', 'number']);
  });
  await knex.schema.alterTable('reading', (t) => t.string('remark', 20).defaultTo('none').index('ix_remark'));
  await knex.schema.alterTable('reading', (t) => t.string('remark', 30).defaultTo('none').alter({ alterNullable: false }));
  await knex.schema.createView('names', (v) => { v.columns(['name']); v.as(knex('site').select('name')); });
  assert.deepStrictEqual([await knex.schema.hasTable('reading'), await knex.schema.hasColumn('reading', 'gone')], [true, false]);
  assert.deepStrictEqual(await knex('reading').columnInfo(), {
    site_id: { defaultValue: null, type: 'int', maxLength: null, nullable: false },
    number: { defaultValue: null, type: 'smallint', maxLength: null, nullable: false },
    taken: { defaultValue: null, type: 'datetime2', maxLength: null, nullable: true },
    raw: { defaultValue: null, type: 'varbinary', maxLength: -1, nullable: true },
    remark: { defaultValue: "('none')", type: 'nvarchar', maxLength: 30, nullable: true },
  });
}

async function useRows() {
  const names = ["it's \u20ac", 'two'];
  assert.deepStrictEqual(await knex('site').insert(names.map((name) => ({ name })), ['id', 'name', 'amount', 'good']),
    names.map((name, i) => ({ id: i + 1, name, amount: 1.5, good: true })));
  await knex('reading').insert([1, 2].map((number) => ({ site_id: 1, number, taken: moment, raw: Buffer.from([0, number]) })));
  await knex.batchInsert('reading', Array.from({ length: 300 }, (_, i) => ({ site_id: 2, number: i, taken: null })), 100);
  assert.deepStrictEqual(
    await knex('reading').join('site', 'id', 'site_id').select('name', 'number', 'taken', 'raw', 'remark').where('id', 1).orderBy('number', 'desc').limit(1).offset(1),
    [{ name: names[0], number: 1, taken: moment, raw: Buffer.from([0, 1]), remark: 'none' }]);
  assert.deepStrictEqual(await knex('reading').groupBy('site_id').count('* as n').max('number as m').select('site_id').having('site_id', '>', 1),
    [{ n: 300, m: 299, site_id: 2 }]);
  assert.deepStrictEqual(await knex('reading').where({ site_id: 1 }).update({ taken: null }, ['number']), [{ number: 1 }, { number: 2 }]);
  assert.strictEqual(await knex('reading').where('number', '>', 1).whereIn('site_id', knex('names').join('site as s', 's.name', 'names.name').select('s.id')).increment('number', 500), 299);
  assert.deepStrictEqual(await knex('site').with('best', knex('site').max('id as id')).join('best', 'best.id', 'site.id').first('site.name'), { name: 'two' });
  await assert.rejects(knex('site').insert({ name: 'TWO ' }), { number: 2627 });
  await assert.rejects(knex('reading').insert({ site_id: 3, number: 1 }), { number: 547 });
}

async function useTransactions() {
  const count = async (k, table) => (await k(table).count('* as n'))[0].n;
  await assert.rejects(knex.transaction(async (outer) => {
    await outer('site').where({ id: 2 }).delete();
    await assert.rejects(outer.transaction(async (inner) => {
      await inner('site').delete();
      throw new Error('inner');
    }), /inner/);
    assert.deepStrictEqual([await count(outer, 'site'), await count(outer, 'reading')], [1, 2]);
    throw new Error('outer');
  }), /outer/);
  assert.strictEqual(await count(knex, 'reading'), 302);
  assert.strictEqual(await knex.transaction((trx) => trx('site').where({ id: 2 }).delete(), { isolationLevel: 'serializable' }), 1);
  assert.strictEqual(await count(knex, 'reading'), 2);
}

async function undoSchema() {
  assert.deepStrictEqual(await knex.migrate.latest({ migrationSource }), [1, ['first']]);
  assert.deepStrictEqual(await knex.migrate.rollback({ migrationSource }), [1, ['first']]);
  await knex.schema.alterTable('reading', (t) => { t.dropIndex('remark', 'ix_remark'); t.dropColumn('remark'); t.dropForeign('site_id'); t.dropPrimary(); });
  await knex('reading').truncate();
  await knex.schema.dropView('names').dropTableIfExists('site').dropTable('reading').dropTableIfExists('reading');
  assert.strictEqual(await knex.schema.hasTable('reading'), false);
}

changeSchema().then(useRows).then(useTransactions).then(undoSchema).finally(() => knex.destroy());
