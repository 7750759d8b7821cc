// The server through sequelize: node sequelize_client.js <folder of node_modules> <port> <login> <password>
'use strict';
const assert = require('node:assert');
const path = require('node:path');

const [, , modules, port, login, password] = process.argv;
const load = (name) => require(path.join(modules, 'node_modules', name));
const { Sequelize, DataTypes, Op, UniqueConstraintError, ForeignKeyConstraintError } = load('sequelize');
const db = new Sequelize('sequelize', login, password, {
  host: '127.0.0.1', port: Number(port), dialect: 'mssql', dialectModule: load('tedious'), dialectOptions: { options: { encrypt: false } },
  define: { timestamps: false }, logging: false,
});
const schema = db.getQueryInterface();

const moment = '2024-02-29 01:02:03.123';
const Site = db.define('Site', {
  name: { type: DataTypes.STRING(40), allowNull: false, unique: true },
  amount: { type: DataTypes.DECIMAL(12, 3), defaultValue: 1.5 },
  good: { type: DataTypes.BOOLEAN, defaultValue: true },
  note: DataTypes.TEXT,
  raw: DataTypes.BLOB,
  key: { type: DataTypes.UUID, defaultValue: DataTypes.UUIDV4 },
  kind: DataTypes.ENUM('a', 'b'),
});
const Reading = db.define('Reading', {
  siteId: { type: DataTypes.INTEGER, primaryKey: true },
  number: { type: DataTypes.SMALLINT, primaryKey: true },
  taken: DataTypes.DATE(3),
  day: DataTypes.DATEONLY,
  big: DataTypes.BIGINT,
  ratio: DataTypes.DOUBLE,
}, { indexes: [{ name: 'ix_taken', fields: ['taken', { name: 'number', order: 'DESC' }] }] });
Site.hasMany(Reading, { foreignKey: 'siteId', onDelete: 'CASCADE' });
Reading.belongsTo(Site, { foreignKey: 'siteId' });

async function changeSchema() {
  await db.sync();
  await db.sync();
  assert.deepStrictEqual((await schema.showAllTables()).map((each) => each.tableName).sort(), ['Readings', 'Sites']);
  await schema.addColumn('Readings', 'remark', { type: DataTypes.STRING(20), allowNull: false, defaultValue: 'none' });
  await schema.addIndex('Readings', ['remark'], { name: 'ix_remark', unique: false });
  const { siteId, remark, taken } = await schema.describeTable('Readings');
  const { id, amount } = await schema.describeTable('Sites');
  assert.deepStrictEqual([id, siteId, amount, remark, taken].map((each) => [each.type, each.allowNull, each.primaryKey, each.autoIncrement]), [
    ['INT', false, true, true], ['INT', false, true, false], ['DECIMAL', true, false, false], ['NVARCHAR(20)', false, false, false], ['DATETIMEOFFSET', true, false, false]]);
  assert.strictEqual(amount.defaultValue, '((1.5))');
  const indexes = (await schema.showIndex('Readings')).map(({ name, primary, unique, fields }) =>
    [primary || name, unique, fields.map(({ attribute, order }) => `${attribute} ${order}`)]);
  assert.deepStrictEqual(new Set(indexes), new Set([
    [true, true, ['siteId ASC', 'number ASC']], ['ix_remark', false, ['remark ASC']], ['ix_taken', false, ['taken ASC', 'number DESC']]]));
  const [key] = await schema.getForeignKeyReferencesForTable('Readings');
  assert.deepStrictEqual([key.columnName, key.referencedTableName, key.referencedColumnName], ['siteId', 'Sites', 'id']);
  await schema.addConstraint('Readings', { fields: ['number'], type: 'check', name: 'ck_number', where: { number: { [Op.gt]: 0 } } });
}

async function useRows() {
  const site = await Site.create({ name: "it's \u20ac", raw: Buffer.from([0, 255]), note: 'n'.repeat(9000) });
  assert.deepStrictEqual([site.id, site.amount, site.good], [1, 1.5, true]);
  await Reading.bulkCreate([1, 2, 3].map((number) => ({ siteId: 1, number, taken: moment, day: '2024-02-29', big: '9223372036854775807', ratio: 0.5 })));
  const made = await Site.bulkCreate([{ name: 'a' }, { name: 'b' }], { returning: true });
  assert.deepStrictEqual(made.map((each) => each.id), [2, 3]);
  const found = await Site.findAll({ include: Reading, order: [['id', 'DESC'], [Reading, 'number', 'DESC']] });
  assert.deepStrictEqual(found.map((each) => [each.name, each.Readings.length]), [['b', 0], ['a', 0], ["it's \u20ac", 3]]);
  const { id, Readings, ...rest } = found[2].toJSON();
  assert.deepStrictEqual(rest, { name: "it's \u20ac", amount: 1.5, good: true, note: 'n'.repeat(9000), raw: Buffer.from([0, 255]), key: site.key, kind: null });
  assert.deepStrictEqual(Readings[0], { siteId: 1, number: 3, taken: new Date(`${moment.replace(' ', 'T')}Z`), day: '2024-02-29', big: '9223372036854775807', ratio: 0.5 });
  const page = await Reading.findAndCountAll({ where: { number: { [Op.lt]: 9 } }, order: [['number', 'DESC']], limit: 1, offset: 1 });
  assert.deepStrictEqual([page.count, page.rows.map((each) => each.number)], [3, [2]]);
  const part = await Site.findAll({ include: Reading, limit: 1, order: [['id', 'ASC']], where: { name: { [Op.like]: '%\u20ac' } } });
  assert.deepStrictEqual(part.map((each) => each.Readings.length), [3]);
  const [total] = await Reading.findAll({ attributes: ['siteId', [db.fn('SUM', db.col('ratio')), 'sum']], group: ['siteId'], raw: true });
  assert.deepStrictEqual(total, { siteId: 1, sum: 1.5 });
  assert.deepStrictEqual(await Reading.update({ ratio: 2 }, { where: { number: [1, 2] } }), [2]);
  await Reading.increment('ratio', { by: 2, where: { number: 1 } });
  assert.strictEqual((await Reading.findOne({ where: { number: 1 } })).ratio, 4);
  for (const isNew of [true, false]) assert.strictEqual((await Site.findOrCreate({ where: { name: 'new' } }))[1], isNew);
  await assert.rejects(Site.create({ name: 'NEW' }), UniqueConstraintError);
  await assert.rejects(Reading.create({ siteId: 99, number: 1 }), ForeignKeyConstraintError);
  await assert.rejects(Reading.create({ siteId: 1, number: 0 }), (error) => error.original.number === 547);
}

async function useTransactions() {
  await assert.rejects(db.transaction(async (transaction) => {
    await Site.destroy({ where: {}, transaction });
    assert.strictEqual(await Reading.count({ transaction }), 0);
    throw new Error('undone');
  }), /undone/);
  const isolationLevel = Sequelize.Transaction.ISOLATION_LEVELS.SERIALIZABLE;
  assert.strictEqual(await db.transaction({ isolationLevel }, (transaction) => Reading.count({ transaction })), 3);
  assert.strictEqual(await Reading.destroy({ where: { number: [1, 2] }, limit: 1 }), 1);
  await Reading.destroy({ truncate: true });
}

async function undoSchema() {
  await schema.removeConstraint('Readings', 'ck_number');
  await schema.removeIndex('Readings', 'ix_remark');
  await schema.removeColumn('Readings', 'remark');
  assert.strictEqual('remark' in (await schema.describeTable('Readings')), false);
  await db.drop();
  assert.deepStrictEqual(await schema.showAllTables(), []);
}

changeSchema().then(useRows).then(useTransactions).then(undoSchema).finally(() => db.close());
