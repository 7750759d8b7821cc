// The server through typeorm: node typeorm_client.js <folder of node_modules> <port> <login> <password>
'use strict';
const assert = require('node:assert');
const path = require('node:path');

const [, , modules, port, username, password] = process.argv;
const { DataSource, EntitySchema, TableColumn, TableIndex, In, Like } = require(path.join(modules, 'node_modules', 'typeorm'));

const Site = new EntitySchema({
  name: 'Site',
  tableName: 'site',
  columns: {
    id: { type: 'int', primary: true, generated: 'increment' },
    name: { type: 'nvarchar', length: 40, unique: true },
    amount: { type: 'decimal', precision: 12, scale: 3, default: 1.5 },
    good: { type: 'bit', default: true },
    note: { type: 'nvarchar', length: 'max', nullable: true },
    created: { type: 'datetime2', createDate: true },
  },
  relations: { readings: { type: 'one-to-many', target: 'Reading', inverseSide: 'site', cascade: true } },
});
const readingWith = (more) => new EntitySchema({
  name: 'Reading',
  tableName: 'reading',
  columns: {
    siteId: { type: 'int', primary: true },
    number: { type: 'smallint', primary: true },
    taken: { type: 'datetime2', precision: 3, nullable: true },
    raw: { type: 'varbinary', length: 'max', nullable: true },
    ...more,
  },
  relations: { site: { type: 'many-to-one', target: 'Site', inverseSide: 'readings', joinColumn: { name: 'siteId' }, onDelete: 'CASCADE' } },
  indices: [{ name: 'ix_taken', columns: ['taken', 'number'] }],
  checks: [{ name: 'ck_number', expression: '"number" > 0' }],
});
const open = (more) => new DataSource({
  type: 'mssql', host: '127.0.0.1', port: Number(port), username, password, database: 'typeorm',
  entities: [Site, readingWith(more)], options: { encrypt: false },
}).initialize();
// The statements that would make the schema that of the entities.
const missing = async (source) => (await source.driver.createSchemaBuilder().log()).upQueries.map((each) => each.query);

async function changeSchema() {
  const before = await open({});
  await before.synchronize();
  assert.deepStrictEqual(await missing(before), []);
  await before.destroy();
  const source = await open({ remark: { type: 'nvarchar', length: 20, default: 'none' } });
  assert.match((await missing(source)).join(), /^ALTER TABLE "reading" ADD "remark" nvarchar\(20\) NOT NULL CONSTRAINT "\w+" DEFAULT 'none'$/);
  await source.synchronize();
  assert.deepStrictEqual(await missing(source), []);
  return source;
}

async function useRows(source) {
  const sites = source.getRepository('Site'), readings = source.getRepository('Reading');
  const taken = new Date(Date.UTC(2024, 1, 29, 1, 2, 3, 123));
  const saved = await sites.save({ name: "it's \u20ac", note: 'n'.repeat(9000), readings: [{ number: 1, taken, raw: Buffer.from([0, 255]) }, { number: 2 }] });
  assert.deepStrictEqual([saved.id, saved.good, saved.readings[1].remark], [1, true, 'none']);
  const found = await sites.find({ relations: { readings: true }, where: { name: Like('%\u20ac') }, order: { readings: { number: 'DESC' } }, take: 1 });
  assert.deepStrictEqual(found.map(({ created, ...rest }) => rest), [{
    id: 1, name: "it's \u20ac", amount: 1.5, good: true, note: 'n'.repeat(9000), readings: [
      { siteId: 1, number: 2, taken: null, raw: null, remark: 'none' },
      { siteId: 1, number: 1, taken, raw: Buffer.from([0, 255]), remark: 'none' }] }]);
  const groups = source.createQueryBuilder('Reading', 'r').innerJoin('r.site', 's').select('s.name', 'name').addSelect('COUNT(*)', 'n');
  assert.deepStrictEqual(await groups.groupBy('s.name').having('COUNT(*) > :n', { n: 1 }).getRawMany(), [{ name: "it's \u20ac", n: 2 }]);
  assert.strictEqual((await sites.update({ id: 1 }, { amount: 2 })).affected, 1);
  await sites.increment({ id: 1 }, 'amount', 0.5);
  assert.strictEqual((await sites.findOneBy({ id: 1 })).amount, 2.5);
  await readings.insert([{ siteId: 1, number: 3 }, { siteId: 1, number: 4 }]);
  await assert.rejects(sites.insert({ name: "IT'S \u20ac" }), { number: 2627 });
  await assert.rejects(readings.insert({ siteId: 1, number: 0 }), { number: 547 });
  await assert.rejects(source.transaction(async (outer) => {
    await outer.delete('Reading', { number: 4 });
    await assert.rejects(outer.transaction(async (inner) => {
      await inner.delete('Site', {});
      throw new Error('inner');
    }), /inner/);
    assert.strictEqual(await outer.count('Reading'), 3);
    throw new Error('outer');
  }), /outer/);
  assert.strictEqual(await readings.countBy({ number: In([3, 4, 9]) }), 2);
  return source;
}

async function changeTable(source) {
  const runner = source.createQueryRunner();
  await runner.addColumn('reading', new TableColumn({ name: 'extra', type: 'int', isNullable: true }));
  await runner.createIndex('reading', new TableIndex({ name: 'ix_extra', columnNames: ['extra'] }));
  const table = await runner.getTable('reading');
  assert.deepStrictEqual(table.columns.filter((each) => each.isPrimary || each.default).map((each) => [each.name, each.type, each.default]),
    [['siteId', 'int', undefined], ['number', 'smallint', undefined], ['remark', 'nvarchar', "'none'"]]);
  assert.deepStrictEqual(table.foreignKeys.map((each) => [each.columnNames, each.referencedTableName, each.onDelete]), [[['siteId'], 'site', 'CASCADE']]);
  assert.deepStrictEqual(table.indices.map((each) => each.name).sort(), ['ix_extra', 'ix_taken']);
  assert.deepStrictEqual(table.checks.map((each) => [each.name, each.expression]), [['ck_number', '("number" > 0)']]);
  await runner.dropIndex('reading', 'ix_extra');
  await runner.dropColumn('reading', 'extra');
  await runner.dropTable('reading');
  await runner.dropTable('site');
  assert.deepStrictEqual(await runner.getTables(['site', 'reading']), []);
  await runner.release();
  await source.destroy();
}

changeSchema().then(useRows).then(changeTable).catch((error) => { console.error(error); process.exit(1); });
